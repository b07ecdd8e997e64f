#include "history/HistoryScanner.h"

#include "history/ImageHeaderReader.h"
#include "history/VideoDurationReader.h"

#include <QFile>
#include <QFileInfo>
#include <QThreadPool>
#include <QTimeZone>
#include <QtConcurrent/QtConcurrentMap>

#include <dirent.h>

#include <algorithm>
#include <memory>

namespace HistoryScanner {

namespace {

struct DirCloser {
    void operator()(DIR *dir) const { closedir(dir); }
};

// Reading headers mostly waits for the disk, so more threads than cores pay
// off on a cold cache; on a warm one they cost next to nothing.
QThreadPool &headerPool()
{
    static QThreadPool pool;
    static const bool configured = [] {
        pool.setMaxThreadCount(std::max(8, QThread::idealThreadCount() * 2));
        pool.setExpiryTimeout(5000);
        return true;
    }();
    Q_UNUSED(configured);
    return pool;
}

bool looksLikeCapture(const QString &name)
{
    if (!name.startsWith(filePrefix))
        return false;
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot >= 0 && CaptureKinds::of(name.mid(dot + 1)).has_value();
}

} // namespace

std::optional<QDateTime> cutoff(HistoryRetention retention, const QDateTime &now)
{
    switch (retention) {
    case HistoryRetention::day:
        return now.addSecs(-86400);
    case HistoryRetention::week:
        return now.addSecs(-604800);
    case HistoryRetention::month:
        return now.addSecs(-2592000);
    case HistoryRetention::forever:
        return std::nullopt;
    }
    return std::nullopt;
}

QDateTime distantPast()
{
    return QDateTime(QDate(1, 1, 1), QTime(0, 0), QTimeZone::utc());
}

QStringList candidateNames(const QString &folder)
{
    std::unique_ptr<DIR, DirCloser> dir(opendir(QFile::encodeName(folder).constData()));
    if (!dir)
        return {};
    QStringList names;
    while (const dirent *entry = readdir(dir.get())) {
        const QString name = QFile::decodeName(entry->d_name);
        if (!name.startsWith(u'.') && looksLikeCapture(name))
            names.append(name);
    }
    return names;
}

std::optional<HistoryItem> itemFor(const QString &path, const std::optional<FileStatus> &status,
                                   const std::optional<QDateTime> &since)
{
    const QString name = QFileInfo(path).fileName();
    if (!name.startsWith(filePrefix))
        return std::nullopt;
    const std::optional<CaptureKind> kind = CaptureKinds::of(QFileInfo(name).suffix());
    if (!kind || !status || !status->regularFile)
        return std::nullopt;
    const QDateTime date = status->creationDate.value_or(distantPast());
    if (since && date < *since)
        return std::nullopt;
    HistoryItem item;
    item.id = path;
    item.path = path;
    item.date = date;
    item.kind = *kind;
    return item;
}

void readHeader(HistoryItem &item)
{
    if (!item.path)
        return;
    if (item.kind == CaptureKind::video) {
        item.seconds = VideoDurationReader::seconds(*item.path);
        return;
    }
    const QSize size = ImageHeaderReader::pixelSize(*item.path);
    item.pixelWidth = size.width();
    item.pixelHeight = size.height();
}

std::optional<HistoryItem> scan(const QString &path, const std::optional<QDateTime> &since)
{
    std::optional<HistoryItem> item = itemFor(path, FileStatus::of(path), since);
    if (item)
        readHeader(*item);
    return item;
}

QList<HistoryItem> list(const QString &folder, const std::optional<QDateTime> &since)
{
    const QString base = folder.endsWith(u'/') ? folder : folder + u'/';
    const QStringList names = candidateNames(folder);
    const QList<std::optional<HistoryItem>> scanned = QtConcurrent::blockingMapped<QList<std::optional<HistoryItem>>>(
        &headerPool(), names, [&](const QString &name) { return scan(base + name, since); });
    QList<HistoryItem> items;
    items.reserve(scanned.size());
    for (const auto &item : scanned) {
        if (item)
            items.append(*item);
    }
    return items;
}

} // namespace HistoryScanner
