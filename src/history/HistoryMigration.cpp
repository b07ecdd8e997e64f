#include "history/HistoryMigration.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QUuid>

namespace HistoryMigration {

namespace {

// Removes the old folder however the migration ends; a failure to remove is
// of no consequence to anyone.
struct OldFolderRemoval {
    QString path;
    ~OldFolderRemoval() { QDir(path).removeRecursively(); }
};

void setDate(const QString &path, const QDateTime &date)
{
    // The only date a program can set here is the modification time; the
    // listing takes it when it is earlier than the birth time.
    QFile file(path);
    if (file.open(QIODevice::ReadWrite))
        file.setFileTime(date, QFileDevice::FileModificationTime);
}

HistoryItem textItem(const OldHistoryItem &old)
{
    HistoryItem item;
    item.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    item.date = old.date;
    item.kind = CaptureKind::text;
    item.text = old.text;
    return item;
}

void moveCopy(const QString &oldFolder, const QString &saveFolder, const OldHistoryItem &old)
{
    const QString target = QDir(saveFolder).filePath(freeName(saveFolder, old.date));
    // Only a name inside the old folder counts, whatever the index says.
    const QString source = QDir(oldFolder).filePath(QFileInfo(*old.fileName).fileName());
    if (!QFile::rename(source, target))
        return;
    setDate(target, old.date);
}

} // namespace

QString freeName(const QString &saveFolder, const QDateTime &date)
{
    const QString stamp = QLocale::c().toString(date.toLocalTime(), QStringLiteral("yyyy-MM-dd-HHmmss"));
    const QDir folder(saveFolder);
    QString name = QStringLiteral("glimpso-%1.png").arg(stamp);
    for (int n = 2; folder.exists(name); ++n)
        name = QStringLiteral("glimpso-%1-%2.png").arg(stamp).arg(n);
    return name;
}

std::optional<QList<HistoryItem>> migrateCopies(const QString &supportFolder, const QString &saveFolder)
{
    const QString oldFolder = QDir(supportFolder).filePath(QStringLiteral("History"));
    QFile index(QDir(oldFolder).filePath(QStringLiteral("history.json")));
    if (!index.exists())
        return std::nullopt;
    const OldFolderRemoval removal{oldFolder};
    if (!index.open(QIODevice::ReadOnly))
        return std::nullopt;
    const std::optional<QList<OldHistoryItem>> oldItems = OldHistoryItem::decodeList(index.readAll());
    index.close();
    if (!oldItems)
        return std::nullopt;

    QDir().mkpath(saveFolder);
    QList<HistoryItem> texts;
    for (const OldHistoryItem &old : *oldItems) {
        if (old.kind == u"text" && old.text) {
            texts.append(textItem(old));
            continue;
        }
        // A copy the user had already saved elsewhere is simply dropped.
        if (old.savedPath || !old.fileName)
            continue;
        moveCopy(oldFolder, saveFolder, old);
    }
    return texts;
}

} // namespace HistoryMigration
