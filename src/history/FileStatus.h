#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

struct statx;

// What the listing needs to know of one directory entry, from one statx call
// that does not follow symbolic links: a link named like a capture is not a
// capture, and neither is a folder, a pipe or a device.
struct FileStatus {
    bool regularFile = false;
    // Absent when the file system gives neither a birth nor a change date.
    std::optional<QDateTime> creationDate;
    // What says whether the file's contents can have changed since it was last
    // looked at: which file it is (device and inode: a rewrite through a
    // temporary file and a rename gives a new one), its size, and the times of
    // its last change of contents and of its inode (the latter moves whenever
    // the former is set by hand, which a copy keeping dates does).
    struct Identity {
        quint64 device = 0;
        quint64 inode = 0;
        qint64 size = 0;
        qint64 modifiedNs = 0;
        qint64 changedNs = 0;
        friend bool operator==(const Identity &, const Identity &) = default;
    };
    Identity identity;

    // Absent when the entry can't be looked at (gone, or a dangling path).
    static std::optional<FileStatus> of(const QString &path);
    // The same for the entry `name` of the folder open as `folder`: a listing
    // looks up each name in its folder instead of walking the whole path.
    static std::optional<FileStatus> in(int folder, const QString &name);

    // The creation date of a capture: its birth time, unless the modification
    // time is earlier. Birth time is what the file system records at creation;
    // an earlier modification time means the file was brought in with its own
    // date kept (a copy with dates kept, an archive, the migration of the old
    // history, which can set only this one), and that date is the capture's.
    // Without a birth time, the modification time.
    static std::optional<QDateTime> creationDateFrom(const struct statx &facts);
    static Identity identityFrom(const struct statx &facts);
};
