#include "history/HistoryItem.h"

#include "history/JsonFields.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTimeZone>

#include <cmath>

namespace {
// Dates further away than this (about 3,000 years either side) are not dates of
// captures; within it, milliseconds stay exact through the JSON double.
constexpr double maxReferenceSeconds = 1e11;
} // namespace

QDateTime HistoryItem::referenceDate()
{
    return QDateTime(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc());
}

double HistoryItem::secondsSinceReferenceDate(const QDateTime &date)
{
    return static_cast<double>(referenceDate().msecsTo(date)) / 1000.0;
}

QDateTime HistoryItem::dateFromReferenceSeconds(double seconds)
{
    return referenceDate().addMSecs(static_cast<qint64>(std::llround(seconds * 1000.0)));
}

QJsonObject HistoryItem::toJson() const
{
    QJsonObject object{
        {QStringLiteral("id"), id},
        {QStringLiteral("date"), secondsSinceReferenceDate(date)},
        {QStringLiteral("kind"), CaptureKinds::rawValue(kind)},
        {QStringLiteral("pixelWidth"), pixelWidth},
        {QStringLiteral("pixelHeight"), pixelHeight},
        {QStringLiteral("seconds"), seconds},
    };
    if (path)
        object.insert(QStringLiteral("path"), *path);
    if (text)
        object.insert(QStringLiteral("text"), *text);
    return object;
}

std::optional<HistoryItem> HistoryItem::fromJson(const QJsonObject &object)
{
    HistoryItem item;
    QString kindText;
    double dateSeconds = 0;
    const bool ok = JsonFields::requiredString(object, QStringLiteral("id"), item.id) &&
                    JsonFields::requiredNumber(object, QStringLiteral("date"), dateSeconds) &&
                    JsonFields::requiredString(object, QStringLiteral("kind"), kindText) &&
                    JsonFields::optionalString(object, QStringLiteral("path"), item.path) &&
                    JsonFields::optionalInteger(object, QStringLiteral("pixelWidth"), item.pixelWidth) &&
                    JsonFields::optionalInteger(object, QStringLiteral("pixelHeight"), item.pixelHeight) &&
                    JsonFields::optionalString(object, QStringLiteral("text"), item.text) &&
                    JsonFields::optionalNumber(object, QStringLiteral("seconds"), item.seconds);
    if (!ok || std::abs(dateSeconds) > maxReferenceSeconds)
        return std::nullopt;
    const std::optional<CaptureKind> kind = CaptureKinds::fromRawValue(kindText);
    if (!kind)
        return std::nullopt;
    item.kind = *kind;
    item.date = dateFromReferenceSeconds(dateSeconds);
    return item;
}

QList<HistoryItem> HistoryItem::decodeList(const QByteArray &bytes)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isArray())
        return {};
    QList<HistoryItem> items;
    for (const QJsonValue &element : document.array()) {
        if (!element.isObject())
            continue;
        if (auto item = fromJson(element.toObject()))
            items.append(std::move(*item));
    }
    return items;
}

QByteArray HistoryItem::encodeList(const QList<HistoryItem> &items)
{
    QJsonArray array;
    for (const HistoryItem &item : items)
        array.append(item.toJson());
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}
