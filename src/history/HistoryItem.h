#pragma once

#include "appbase/CaptureKind.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

// One entry of the history: a capture file in the save folder, or a text from
// Capture Text that has no file. A plain value.
//
// Its JSON form is part of the format of "text.json": an object with the keys
// "id", "date", "kind", "path", "pixelWidth", "pixelHeight", "text", "seconds";
// "path" and "text" are left out when absent, and "date" is a number of
// seconds since 2001-01-01 00:00:00 UTC.
struct HistoryItem {
    QString id;     // a file's full path, or a fresh UUID for a text
    QDateTime date; // the file's creation date, or the moment it was added
    CaptureKind kind = CaptureKind::image;
    std::optional<QString> path;
    qint64 pixelWidth = 0;  // 0 if unknown
    qint64 pixelHeight = 0; // 0 if unknown
    std::optional<QString> text;
    double seconds = 0; // length of a video; 0 for all else

    bool operator==(const HistoryItem &other) const = default;

    QJsonObject toJson() const;
    // "id", "date" and "kind" are required; a key of the wrong type fails the item.
    static std::optional<HistoryItem> fromJson(const QJsonObject &object);

    // The tolerant reading of a whole file: anything but a JSON array reads as
    // empty, and an element that does not decode is skipped without costing
    // the others.
    static QList<HistoryItem> decodeList(const QByteArray &bytes);
    static QByteArray encodeList(const QList<HistoryItem> &items);

    // Dates in the JSON form count from this moment.
    static QDateTime referenceDate();
    static double secondsSinceReferenceDate(const QDateTime &date);
    static QDateTime dateFromReferenceSeconds(double seconds);
};
