#include "history/FileStatus.h"

#include <QFile>
#include <QTimeZone>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>

namespace {
QDateTime fromTimestamp(const struct statx_timestamp &stamp)
{
    const qint64 msecs = stamp.tv_sec * 1000 + stamp.tv_nsec / 1000000;
    return QDateTime::fromMSecsSinceEpoch(msecs, QTimeZone::utc());
}
} // namespace

std::optional<QDateTime> FileStatus::creationDateFrom(const struct statx &facts)
{
    const bool hasBirth = facts.stx_mask & STATX_BTIME;
    const bool hasModified = facts.stx_mask & STATX_MTIME;
    if (hasBirth && hasModified)
        return fromTimestamp(std::min(facts.stx_btime, facts.stx_mtime, [](const auto &a, const auto &b) {
            return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
        }));
    if (hasBirth)
        return fromTimestamp(facts.stx_btime);
    if (hasModified)
        return fromTimestamp(facts.stx_mtime);
    return std::nullopt;
}

FileStatus::Identity FileStatus::identityFrom(const struct statx &facts)
{
    // A fact the file system doesn't give stays 0 on both sides of a comparison;
    // the others still tell a change.
    const auto nanoseconds = [](const struct statx_timestamp &stamp) {
        return qint64(stamp.tv_sec) * 1000000000 + stamp.tv_nsec;
    };
    Identity identity;
    identity.device = (quint64(facts.stx_dev_major) << 32) | facts.stx_dev_minor;
    if (facts.stx_mask & STATX_INO)
        identity.inode = facts.stx_ino;
    if (facts.stx_mask & STATX_SIZE)
        identity.size = qint64(facts.stx_size);
    if (facts.stx_mask & STATX_MTIME)
        identity.modifiedNs = nanoseconds(facts.stx_mtime);
    if (facts.stx_mask & STATX_CTIME)
        identity.changedNs = nanoseconds(facts.stx_ctime);
    return identity;
}

std::optional<FileStatus> FileStatus::of(const QString &path)
{
    return in(AT_FDCWD, path);
}

std::optional<FileStatus> FileStatus::in(int folder, const QString &name)
{
    struct statx facts {};
    constexpr unsigned wanted = STATX_TYPE | STATX_BTIME | STATX_MTIME | STATX_CTIME | STATX_INO | STATX_SIZE;
    if (::statx(folder, QFile::encodeName(name).constData(), AT_SYMLINK_NOFOLLOW, wanted, &facts) != 0)
        return std::nullopt;
    FileStatus status;
    status.regularFile = (facts.stx_mask & STATX_TYPE) && S_ISREG(facts.stx_mode);
    status.creationDate = creationDateFrom(facts);
    status.identity = identityFrom(facts);
    return status;
}
