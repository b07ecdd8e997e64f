#include "history/HistoryStore.h"

#include "history/HistoryMigration.h"
#include "history/HistoryScanner.h"
#include "history/ImageHeaderReader.h"
#include "history/VideoDurationReader.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QGuiApplication>
#include <QImage>
#include <QLoggingCategory>
#include <QMimeData>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>
#include <QUuid>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

Q_LOGGING_CATEGORY(lcHistory, "glimpso.History", QtInfoMsg)

namespace {

const QString trashFailedTitle = QStringLiteral("Couldn't move it to the Trash");
constexpr double trashNoticeSeconds = 2.0;

void sortNewestFirst(QList<HistoryItem> &items)
{
    std::stable_sort(items.begin(), items.end(),
                     [](const HistoryItem &a, const HistoryItem &b) { return a.date > b.date; });
}

QList<HistoryItem> readTexts(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return HistoryItem::decodeList(file.readAll());
}

struct TrashOutcome {
    bool moved = false;
    QString error;
};

TrashOutcome moveToTrash(const QString &path)
{
    QFile file(path);
    if (file.moveToTrash())
        return {true, {}};
    return {false, file.errorString()};
}

// Runs `done` with the task's result on the owner's thread, always later from
// the event loop, never inside the call that started the task: a listing of an
// empty folder can finish before the caller has even connected to its signal.
template <typename T, typename Done>
void whenFinished(QObject *owner, const QFuture<T> &future, Done done)
{
    auto *watcher = new QFutureWatcher<T>(owner);
    QObject::connect(watcher, &QFutureWatcherBase::finished, owner, [watcher, done = std::move(done)]() mutable {
        done(watcher->result());
        watcher->deleteLater();
    });
    watcher->setFuture(future);
}

} // namespace

HistoryStore::HistoryStore(AppSettings &settings, const QString &supportFolder, const QString &headerCacheFile,
                           QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_support(supportFolder)
    , m_headerCacheFile(headerCacheFile)
{
    QDir().mkpath(m_support);
    m_texts = readTexts(textFilePath());
    migrateCopies();
    refresh();
}

HistoryStore::~HistoryStore()
{
    if (m_folderAccess)
        m_folderAccess->stop();
}

QString HistoryStore::defaultSupportFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/glimpso");
}

QString HistoryStore::textFilePath() const
{
    return QDir(m_support).filePath(QStringLiteral("text.json"));
}

void HistoryStore::refresh()
{
    if (m_folderAccess)
        m_folderAccess->stop();
    m_folderAccess = m_settings.accessSaveDirectory();
    const QString folder = m_folderAccess->path;
    const std::optional<QDateTime> since =
        HistoryScanner::cutoff(m_settings.historyRetention(), QDateTime::currentDateTimeUtc());

    // A text beyond the reach only drops out of the list; it stays in `texts`
    // and comes back when the reach is widened.
    QList<HistoryItem> visibleTexts;
    for (const HistoryItem &text : std::as_const(m_texts)) {
        if (!since || text.date >= *since)
            visibleTexts.append(text);
    }

    whenFinished(this,
                 QtConcurrent::run([folder, since, cache = m_headerCacheFile] {
                     return HistoryScanner::list(folder, since, cache);
                 }),
                 [this, visibleTexts](QList<HistoryItem> scanned) {
                     scanned += visibleTexts;
                     sortNewestFirst(scanned);
                     setItems(std::move(scanned));
                 });
}

void HistoryStore::addFile(const QString &path)
{
    const std::optional<CaptureKind> kind = CaptureKinds::of(QFileInfo(path).suffix());
    if (!kind)
        return;
    HistoryItem item;
    item.id = path;
    item.path = path;
    item.date = QDateTime::currentDateTimeUtc();
    item.kind = *kind;
    // Read here on the main thread: one header is a few kilobytes at most, and
    // the capture was written a moment ago, so it is in the cache.
    HistoryScanner::readHeader(item);

    QList<HistoryItem> items = m_items;
    items.removeIf([&](const HistoryItem &existing) { return existing.id == item.id; });
    items.prepend(item);
    setItems(std::move(items));
}

void HistoryStore::addText(const QString &text)
{
    if (!m_settings.keepHistory())
        return;
    HistoryItem item;
    item.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    item.date = QDateTime::currentDateTimeUtc();
    item.kind = CaptureKind::text;
    item.text = text;

    m_texts.prepend(item);
    persistTexts();
    QList<HistoryItem> items = m_items;
    items.prepend(item);
    setItems(std::move(items));
}

void HistoryStore::deleteItem(const HistoryItem &item)
{
    if (!item.path) {
        m_texts.removeIf([&](const HistoryItem &text) { return text.id == item.id; });
        persistTexts();
        removeFromItems(item.id);
        return;
    }
    trashFile(item);
}

void HistoryStore::trashFile(const HistoryItem &item)
{
    const AppSettings::SaveDirectoryAccess access = m_settings.accessSaveDirectory();
    const QString path = *item.path;
    const QString id = item.id;
    whenFinished(this, QtConcurrent::run([path] { return moveToTrash(path); }),
                 [this, id, stop = access.stop](const TrashOutcome &outcome) {
                     if (outcome.moved) {
                         removeFromItems(id);
                     } else {
                         qCCritical(lcHistory, "history: couldn't move to Trash: %s", qUtf8Printable(outcome.error));
                         if (onNotice)
                             onNotice(trashFailedTitle, outcome.error, trashNoticeSeconds);
                     }
                     stop();
                 });
}

void HistoryStore::clearText()
{
    m_texts.clear();
    persistTexts();
    QList<HistoryItem> items = m_items;
    items.removeIf([](const HistoryItem &item) { return item.kind == CaptureKind::text; });
    setItems(std::move(items));
}

void HistoryStore::copy(const HistoryItem &item) const
{
    // The command line runs without a GUI application, and has no clipboard.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return;
    QClipboard *clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    if (item.kind == CaptureKind::text) {
        clipboard->setText(item.text.value_or(QString()));
        return;
    }
    if (!item.path)
        return;
    // A picture pastes as a picture where one is wanted, and as a file in a file manager.
    auto *data = new QMimeData;
    data->setUrls({QUrl::fromLocalFile(*item.path)});
    if (item.kind == CaptureKind::image) {
        const QImage image(*item.path);
        if (!image.isNull())
            data->setImageData(image);
    }
    clipboard->setMimeData(data);
}

void HistoryStore::setItems(QList<HistoryItem> items)
{
    m_items = std::move(items);
    Q_EMIT itemsChanged(m_items);
}

void HistoryStore::removeFromItems(const QString &id)
{
    QList<HistoryItem> items = m_items;
    items.removeIf([&](const HistoryItem &item) { return item.id == id; });
    setItems(std::move(items));
}

void HistoryStore::persistTexts()
{
    // Written whole and atomically: a reader never sees half a file, and a
    // failed write leaves the previous one.
    QSaveFile file(textFilePath());
    if (!file.open(QIODevice::WriteOnly) || file.write(HistoryItem::encodeList(m_texts)) < 0 || !file.commit())
        qCCritical(lcHistory, "history: couldn't save the text: %s", qUtf8Printable(file.errorString()));
}

void HistoryStore::migrateCopies()
{
    const AppSettings::SaveDirectoryAccess access = m_settings.accessSaveDirectory();
    const std::optional<QList<HistoryItem>> texts = HistoryMigration::migrateCopies(m_support, access.path);
    access.stop();
    if (!texts)
        return;
    m_texts += *texts;
    sortNewestFirst(m_texts);
    persistTexts();
    qCInfo(lcHistory, "history: moved the old history's copies into the save folder");
}
