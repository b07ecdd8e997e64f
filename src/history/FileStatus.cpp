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

std::optional<FileStatus> FileStatus::of(const QString &path)
{
    struct statx facts {};
    const QByteArray name = QFile::encodeName(path);
    if (::statx(AT_FDCWD, name.constData(), AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_BTIME | STATX_MTIME, &facts) != 0)
        return std::nullopt;
    FileStatus status;
    status.regularFile = (facts.stx_mask & STATX_TYPE) && S_ISREG(facts.stx_mode);
    status.creationDate = creationDateFrom(facts);
    return status;
}
