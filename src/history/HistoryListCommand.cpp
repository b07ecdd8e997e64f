#include "history/HistoryListCommand.h"

#include "history/HistoryStore.h"

#include <QEventLoop>
#include <QJsonDocument>

namespace {

QString usageError()
{
    return QStringLiteral("glimpso: usage: glimpso history --list [--json]");
}

QString escaped(QString text)
{
    text.replace(u'\\', QStringLiteral("\\\\"));
    text.replace(u'\t', QStringLiteral("\\t"));
    text.replace(u'\n', QStringLiteral("\\n"));
    text.replace(u'\r', QStringLiteral("\\r"));
    return text;
}

QString measure(const HistoryItem &item)
{
    switch (item.kind) {
    case CaptureKind::text:
        return QStringLiteral("-");
    case CaptureKind::video:
        return QString::number(item.seconds, 'f', 2) + u's';
    case CaptureKind::image:
    case CaptureKind::gif:
        break;
    }
    return QStringLiteral("%1x%2").arg(item.pixelWidth).arg(item.pixelHeight);
}

} // namespace

HistoryListCommand::Outcome HistoryListCommand::run(const QStringList &arguments, AppSettings &settings,
                                                    const QString &supportFolder, const QString &headerCacheFile)
{
    bool json = false;
    if (arguments.value(0) != u"--list")
        return {2, {}, usageError()};
    for (const QString &argument : arguments.mid(1)) {
        if (argument != u"--json")
            return {2, {}, usageError()};
        json = true;
    }
    const QList<HistoryItem> items = listing(settings, supportFolder, headerCacheFile);
    return {0, json ? formatJson(items) : formatLines(items), {}};
}

QList<HistoryItem> HistoryListCommand::listing(AppSettings &settings, const QString &supportFolder,
                                               const QString &headerCacheFile)
{
    // The store lists the folder off this thread and hands the list back
    // through the event loop, exactly as it does for the panel.
    QEventLoop loop;
    HistoryStore store(settings, supportFolder, headerCacheFile);
    QList<HistoryItem> items;
    QObject::connect(&store, &HistoryStore::itemsChanged, &loop, [&](const QList<HistoryItem> &listed) {
        items = listed;
        loop.quit();
    });
    loop.exec();
    return items;
}

QString HistoryListCommand::formatLine(const HistoryItem &item)
{
    const QString where = item.path ? *item.path : escaped(item.text.value_or(QString()));
    return QStringList{item.date.toLocalTime().toString(Qt::ISODate), CaptureKinds::rawValue(item.kind), measure(item),
                       where}
        .join(u'\t');
}

QString HistoryListCommand::formatLines(const QList<HistoryItem> &items)
{
    QString text;
    for (const HistoryItem &item : items)
        text += formatLine(item) + u'\n';
    return text;
}

QString HistoryListCommand::formatJson(const QList<HistoryItem> &items)
{
    // The same compact array as text.json, written an item at a time: a whole
    // QJsonArray of a large folder would cost several times the memory.
    QByteArray bytes("[");
    for (const HistoryItem &item : items) {
        if (bytes.size() > 1)
            bytes += ',';
        bytes += QJsonDocument(item.toJson()).toJson(QJsonDocument::Compact);
    }
    bytes += ']';
    return QString::fromUtf8(bytes);
}
