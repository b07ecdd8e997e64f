#include "history/HistoryScanner.h"

#include "history/HeaderFactsCache.h"
#include "history/ImageHeaderReader.h"
#include "history/VideoDurationReader.h"

#include <QFile>
#include <QFileInfo>
#include <QThreadPool>
#include <QTimeZone>
#include <QScopeGuard>
#include <QtConcurrent/QtConcurrentMap>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

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
        pool.setMaxThreadCount(std::max(16, QThread::idealThreadCount() * 4));
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

namespace {

struct Candidate {
    QString name;
    ino_t inode = 0;
    qsizetype listingIndex = 0;
};

QList<Candidate> listCandidates(const QString &folder)
{
    std::unique_ptr<DIR, DirCloser> dir(opendir(QFile::encodeName(folder).constData()));
    if (!dir)
        return {};
    QList<Candidate> candidates;
    while (const dirent *entry = readdir(dir.get())) {
        const QString name = QFile::decodeName(entry->d_name);
        if (!name.startsWith(u'.') && looksLikeCapture(name))
            candidates.append({name, entry->d_ino, candidates.size()});
    }
    return candidates;
}

// Files written one after another have neighbouring inodes, and mostly lie
// side by side on the disk: looked at in that order, a cold disk is read
// nearly in one sweep instead of by jumps back and forth.
QList<Candidate> candidatesInDiskOrder(const QString &folder)
{
    QList<Candidate> candidates = listCandidates(folder);
    std::sort(candidates.begin(), candidates.end(),
              [](const Candidate &a, const Candidate &b) { return a.inode < b.inode; });
    return candidates;
}

} // namespace

QStringList candidateNames(const QString &folder)
{
    QStringList names;
    for (const Candidate &candidate : listCandidates(folder))
        names.append(candidate.name);
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

namespace {

HeaderFactsCache::Facts factsOf(const HistoryItem &item)
{
    return {item.pixelWidth, item.pixelHeight, item.seconds};
}

void applyFacts(HistoryItem &item, const HeaderFactsCache::Facts &facts)
{
    item.pixelWidth = facts.pixelWidth;
    item.pixelHeight = facts.pixelHeight;
    item.seconds = facts.seconds;
}

// One entry of a listing, with what the next listing may take from the cache.
struct Looked {
    std::optional<HistoryItem> item;
    std::optional<FileStatus::Identity> identity; // of a regular file
    std::optional<HeaderFactsCache::Facts> facts;
};

Looked look(int folder, const QString &path, const QString &name, const std::optional<QDateTime> &since,
            const HeaderFactsCache &known)
{
    const std::optional<FileStatus> status = FileStatus::in(folder, name);
    Looked looked;
    if (status && status->regularFile) {
        looked.identity = status->identity;
        looked.facts = known.find(name, status->identity);
    }
    looked.item = itemFor(path, status, since);
    if (!looked.item)
        return looked; // beyond the reach: what the cache knew of it is kept as it was
    if (looked.facts) {
        applyFacts(*looked.item, *looked.facts);
    } else {
        readHeader(*looked.item);
        looked.facts = factsOf(*looked.item);
    }
    return looked;
}

} // namespace

QList<HistoryItem> list(const QString &folder, const std::optional<QDateTime> &since, const QString &headerCacheFile)
{
    const QString base = folder.endsWith(u'/') ? folder : folder + u'/';
    const QList<Candidate> candidates = candidatesInDiskOrder(folder);
    const HeaderFactsCache known =
        headerCacheFile.isEmpty() ? HeaderFactsCache(folder) : HeaderFactsCache::load(headerCacheFile, folder);
    const int folderDescriptor = ::open(QFile::encodeName(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (folderDescriptor < 0)
        return {};
    const auto closeFolder = qScopeGuard([folderDescriptor] { ::close(folderDescriptor); });
    const QList<Looked> scanned = QtConcurrent::blockingMapped<QList<Looked>>(
        &headerPool(), candidates,
        [&](const Candidate &candidate) {
            return look(folderDescriptor, base + candidate.name, candidate.name, since, known);
        });

    // Back in the order of the listing, which decides among equal dates.
    QList<std::optional<HistoryItem>> listed(scanned.size());
    HeaderFactsCache current(folder);
    for (qsizetype i = 0; i < scanned.size(); ++i) {
        listed[candidates[i].listingIndex] = scanned[i].item;
        if (scanned[i].identity && scanned[i].facts)
            current.insert(candidates[i].name, *scanned[i].identity, *scanned[i].facts);
    }
    // Written only when something changed: a new or changed capture, or one gone.
    if (!headerCacheFile.isEmpty() && !(current == known))
        current.save(headerCacheFile);

    QList<HistoryItem> items;
    items.reserve(listed.size());
    for (const auto &item : listed) {
        if (item)
            items.append(*item);
    }
    return items;
}

} // namespace HistoryScanner
