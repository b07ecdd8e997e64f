#pragma once

#include "cloud/S3CompatibleProvider.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QMutex>
#include <QString>
#include <QUrl>

// Multipart uploads that failed, and whose abort did not get through either
// (the server went away mid-upload): their parts would stay in the bucket,
// unseen and paid for. They are kept in a small file in glimpso's data folder
// ("abandoned-uploads.json") and aborted again after the next upload to the
// same bucket; one a month old is given up. Any thread.
class AbandonedUploads
{
public:
    struct Entry {
        QUrl objectURL;
        QString uploadId;
        QDateTime since;
        bool operator==(const Entry &) const = default;
    };

    static constexpr int keepDays = 30;

    explicit AbandonedUploads(QString path = defaultPath());
    // $XDG_DATA_HOME/glimpso/abandoned-uploads.json.
    static QString defaultPath();

    void add(const Entry &entry);
    QList<Entry> entries() const;
    // Aborts each of those in the provider's bucket; those that get through,
    // and those too old to try, are forgotten. How many were released.
    int retry(glimpso::cloud::S3CompatibleProvider &provider, const QDateTime &now);

    static QByteArray encode(const QList<Entry> &entries);
    // Entries that don't decode are skipped.
    static QList<Entry> decode(const QByteArray &bytes);

private:
    QList<Entry> load() const;
    void store(const QList<Entry> &entries) const;

    QString m_path;
    mutable QMutex m_mutex;
};
