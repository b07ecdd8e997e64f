#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

// One entry of the index "History/history.json" that an earlier version kept
// beside copies of its captures. Read once, by the migration. The JSON keys
// are the field names; "date" counts seconds from 2001-01-01 00:00:00 UTC.
struct OldHistoryItem {
    QDateTime date;
    QString kind;
    std::optional<QString> fileName;
    std::optional<QString> text;
    std::optional<QString> savedPath;

    bool operator==(const OldHistoryItem &other) const = default;

    static std::optional<OldHistoryItem> fromJson(const QJsonObject &object);
    // All or nothing: one element that doesn't decode fails the whole index,
    // as the old version itself read it.
    static std::optional<QList<OldHistoryItem>> decodeList(const QByteArray &bytes);
};
