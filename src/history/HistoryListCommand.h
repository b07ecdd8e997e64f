#pragma once

#include "history/HeaderFactsCache.h"
#include "history/HistoryItem.h"
#include "settings/AppSettings.h"

#include <QList>
#include <QString>
#include <QStringList>

// `glimpso history --list [--json]`: the history as the panel would show it
// (the save folder's captures and the kept texts, newest first, within the
// retention's reach), printed for scripts. Runs in the calling process.
class HistoryListCommand
{
public:
    struct Outcome {
        int exitCode = 0;
        QString output;
        QString error;
    };

    // `arguments` are those after the verb. Header facts are cached in
    // `headerCacheFile`, as the application does.
    static Outcome run(const QStringList &arguments, AppSettings &settings, const QString &supportFolder,
                       const QString &headerCacheFile = HeaderFactsCache::defaultFilePath());

    // One line per item, fields split by a tab: the date (local time, ISO 8601
    // with its offset), the kind, the pixel size "WxH" or the length "12.34s"
    // ("-" for a text), and the path, or for a text the text itself with
    // backslashes, tabs and line breaks written as \\, \t and \n.
    static QString formatLine(const HistoryItem &item);
    static QString formatLines(const QList<HistoryItem> &items);
    // A JSON array of the items in their stored form.
    static QString formatJson(const QList<HistoryItem> &items);

private:
    static QList<HistoryItem> listing(AppSettings &settings, const QString &supportFolder,
                                      const QString &headerCacheFile);
};
