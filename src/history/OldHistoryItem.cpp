#include "history/OldHistoryItem.h"

#include "history/HistoryItem.h"
#include "history/JsonFields.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

namespace {
// As for HistoryItem: further away than this is not a date of a capture.
constexpr double maxReferenceSeconds = 1e11;
} // namespace

std::optional<OldHistoryItem> OldHistoryItem::fromJson(const QJsonObject &object)
{
    OldHistoryItem item;
    double dateSeconds = 0;
    const bool ok = JsonFields::requiredNumber(object, QStringLiteral("date"), dateSeconds) &&
                    JsonFields::requiredString(object, QStringLiteral("kind"), item.kind) &&
                    JsonFields::optionalString(object, QStringLiteral("fileName"), item.fileName) &&
                    JsonFields::optionalString(object, QStringLiteral("text"), item.text) &&
                    JsonFields::optionalString(object, QStringLiteral("savedPath"), item.savedPath);
    if (!ok || std::abs(dateSeconds) > maxReferenceSeconds)
        return std::nullopt;
    item.date = HistoryItem::dateFromReferenceSeconds(dateSeconds);
    return item;
}

std::optional<QList<OldHistoryItem>> OldHistoryItem::decodeList(const QByteArray &bytes)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isArray())
        return std::nullopt;
    QList<OldHistoryItem> items;
    for (const QJsonValue &element : document.array()) {
        if (!element.isObject())
            return std::nullopt;
        auto item = fromJson(element.toObject());
        if (!item)
            return std::nullopt;
        items.append(std::move(*item));
    }
    return items;
}
