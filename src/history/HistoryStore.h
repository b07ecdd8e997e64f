#pragma once

#include "history/HeaderFactsCache.h"
#include "history/HistoryItem.h"
#include "settings/AppSettings.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

// The model behind the history rail. There is no database of captures: the
// list is the save folder itself, listed anew whenever it matters, merged with
// the texts from Capture Text, which have no file and are the only thing the
// store keeps of its own ("text.json" in the support folder). Deleting moves a
// file to the Trash; the retention setting only says how far back the list
// reaches and never deletes anything.
//
// One instance per process, owned by the application, used on the main thread.
class HistoryStore : public QObject
{
    Q_OBJECT

public:
    // What the user is told when something goes wrong: a title, a body and how
    // long the notice stays up. The application connects it to its notifier.
    using Notice = std::function<void(const QString &title, const QString &body, double displaySeconds)>;

    // Creates the support folder, reads the texts, moves the copies of an old
    // history into the save folder, and starts the first listing. Sizes and
    // lengths of captures unchanged since the last listing come from the cache
    // at `headerCacheFile` (see HeaderFactsCache); an empty path keeps none.
    explicit HistoryStore(AppSettings &settings, const QString &supportFolder = defaultSupportFolder(),
                          const QString &headerCacheFile = HeaderFactsCache::defaultFilePath(),
                          QObject *parent = nullptr);
    ~HistoryStore() override;

    // $XDG_DATA_HOME/glimpso.
    static QString defaultSupportFolder();

    // Newest first; what the panel shows. Every change is published whole
    // through itemsChanged.
    const QList<HistoryItem> &items() const { return m_items; }
    // Every text item, also those beyond the retention's reach.
    const QList<HistoryItem> &texts() const { return m_texts; }
    const QString &support() const { return m_support; }
    QString textFilePath() const;

    // Lists the save folder again, off the main thread; the new list arrives
    // through itemsChanged. Two refreshes may overlap: the last to finish wins.
    void refresh();
    // A file that has just been saved goes to the head at once, without a
    // listing; a file saved over an earlier capture keeps one entry.
    void addFile(const QString &path);
    // A text from Capture Text, kept only when the user wishes it.
    void addText(const QString &text);
    // A text is forgotten; a file goes to the Trash, where the user can get it back.
    void deleteItem(const HistoryItem &item);
    // Forgets every text; files are not touched.
    void clearText();
    // Puts an item on the clipboard: a text as text, a file as its URL and,
    // for a picture, also the picture.
    void copy(const HistoryItem &item) const;

    Notice onNotice;

Q_SIGNALS:
    void itemsChanged(const QList<HistoryItem> &items);

private:
    void setItems(QList<HistoryItem> items);
    void removeFromItems(const QString &id);
    void persistTexts();
    void migrateCopies();
    void trashFile(const HistoryItem &item);

    AppSettings &m_settings;
    QString m_support;
    QString m_headerCacheFile;
    QList<HistoryItem> m_items;
    QList<HistoryItem> m_texts;
    // Held open from one listing to the next, so that cards can load their
    // pictures lazily.
    std::optional<AppSettings::SaveDirectoryAccess> m_folderAccess;
};
