#pragma once

#include "history/FileStatus.h"

#include <QHash>
#include <QString>

#include <optional>

// What the headers of a save folder's captures said the last time they were
// read: pixel sizes and video lengths, each kept with the identity of the file
// it was read from. A listing takes a capture's facts from here only when the
// file is still the very same (same device, inode, size, modification and
// change times), and reads the header otherwise; the folder is still listed
// anew every time, and dates always come from the file itself.
//
// It is a cache and nothing more: a missing, unreadable, damaged or stale file,
// or one made for another folder, reads as empty, and a cache that can't be
// written is simply not written. Neither changes what a listing gives.
class HeaderFactsCache
{
public:
    struct Facts {
        qint64 pixelWidth = 0;
        qint64 pixelHeight = 0;
        double seconds = 0;
        friend bool operator==(const Facts &, const Facts &) = default;
    };

    HeaderFactsCache() = default;
    explicit HeaderFactsCache(QString folder);

    // $XDG_CACHE_HOME/glimpso/history-headers.
    static QString defaultFilePath();

    // The cache stored at `file` for `folder`; empty (for that folder) when
    // there is none or it can't be trusted.
    static HeaderFactsCache load(const QString &file, const QString &folder);
    // Writes the whole cache atomically, creating the folder; false when that
    // fails, which leaves any earlier file as it was.
    bool save(const QString &file) const;

    const QString &folder() const { return m_folder; }
    qsizetype size() const { return m_entries.size(); }

    // The facts of the capture `name` in the folder, if they were read from the
    // same file as the one `identity` describes. Safe to call from many threads
    // at once while nothing is inserted.
    std::optional<Facts> find(const QString &name, const FileStatus::Identity &identity) const;
    void insert(const QString &name, const FileStatus::Identity &identity, const Facts &facts);

    friend bool operator==(const HeaderFactsCache &, const HeaderFactsCache &) = default;

private:
    struct Entry {
        FileStatus::Identity identity;
        Facts facts;
        friend bool operator==(const Entry &, const Entry &) = default;
    };

    QString m_folder;
    QHash<QString, Entry> m_entries;
};
