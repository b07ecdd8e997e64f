#pragma once

#include "history/FileStatus.h"
#include "history/HistoryItem.h"
#include "settings/SettingsEnums.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// Turning the save folder into history items. No state: each call looks at the
// disk anew. Everything here may run off the main thread.
namespace HistoryScanner {

// The prefix that marks a file as one of ours. Case matters: "GLIMPSO-" is not it.
inline constexpr QStringView filePrefix = u"glimpso-";

// How far back the list reaches: now minus the retention's reach, or absent
// for `forever`. The reach only hides; nothing is ever deleted for it.
std::optional<QDateTime> cutoff(HistoryRetention retention, const QDateTime &now);

// The date given to a file whose file system gives none: older than any cut-off.
QDateTime distantPast();

// The entries of a folder that could be captures (not hidden, with the prefix and a
// known extension), in the order the folder lists them. Empty if it can't be listed.
QStringList candidateNames(const QString &folder);

// The item for one entry before its header is read, or absent when the entry
// is not a capture (see the tests in `scan`) or lies before the cut-off.
std::optional<HistoryItem> itemFor(const QString &path, const std::optional<FileStatus> &status,
                                   const std::optional<QDateTime> &since);

// The length of a video, or the pixel size of the rest, from the file's header.
// Failure leaves the zeros: the item stays in the list.
void readHeader(HistoryItem &item);

// One entry: a name with the prefix and a known extension, a regular file (not a
// link, folder or pipe), a date not before the cut-off; then its header is read.
std::optional<HistoryItem> scan(const QString &path, const std::optional<QDateTime> &since);

// The whole folder, in listing order. Files are looked at in parallel: when the
// folder is not in the page cache the time goes to waiting for the disk.
// With `headerCacheFile`, sizes and lengths of files unchanged since the last
// listing come from that cache instead of their headers, and the cache is
// brought up to date afterwards (see HeaderFactsCache); the items are the same
// either way.
QList<HistoryItem> list(const QString &folder, const std::optional<QDateTime> &since,
                        const QString &headerCacheFile = {});

} // namespace HistoryScanner
