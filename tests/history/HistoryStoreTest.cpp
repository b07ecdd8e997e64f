#include "history/HistoryStore.h"

#include "HistoryTestFiles.h"

#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMimeData>
#include <QSignalSpy>
#include <QTimeZone>
#include <QUrl>
#include <gtest/gtest.h>

namespace {

constexpr int timeoutMs = 20000;

bool waitUntil(const std::function<bool()> &condition)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

class HistoryStoreTest : public ::testing::Test
{
protected:
    HistoryTestHome home;
    QDateTime now = QDateTime::currentDateTimeUtc();

    // A store whose first listing has arrived.
    std::unique_ptr<HistoryStore> open()
    {
        auto store = std::make_unique<HistoryStore>(home.settings(), home.supportFolder());
        QSignalSpy listed(store.get(), &HistoryStore::itemsChanged);
        EXPECT_TRUE(listed.wait(timeoutMs)) << "the first listing did not arrive";
        return store;
    }
    void refreshAndWait(HistoryStore &store)
    {
        QSignalSpy listed(&store, &HistoryStore::itemsChanged);
        store.refresh();
        EXPECT_TRUE(listed.wait(timeoutMs)) << "the listing did not arrive";
    }
    QString capture(const QString &name, const QDateTime &date)
    {
        const QString path = home.savePath(name);
        HistoryTestFiles::writePng(path, 10, 5);
        HistoryTestFiles::setDate(path, date);
        return path;
    }
    QByteArray textFile() const
    {
        QFile file(home.supportFolder() + "/text.json");
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeTextFile(const QByteArray &bytes) { HistoryTestFiles::writeBytes(home.supportFolder() + "/text.json", bytes); }
    static QJsonObject textJson(const char *id, const QDateTime &date, const char *text)
    {
        return {{"id", id}, {"date", HistoryItem::secondsSinceReferenceDate(date)}, {"kind", "text"}, {"text", text}};
    }
    static QStringList ids(const QList<HistoryItem> &items)
    {
        QStringList list;
        for (const HistoryItem &item : items)
            list << (item.path ? QFileInfo(*item.path).fileName() : item.id);
        return list;
    }
};

TEST_F(HistoryStoreTest, ListsCapturesAndTextsNewestFirst)
{
    capture("glimpso-a.png", now.addSecs(-300));
    capture("glimpso-c.png", now.addSecs(-100));
    writeTextFile(QJsonDocument(QJsonArray{textJson("T1", now.addSecs(-200), "between")}).toJson());
    auto store = open();
    EXPECT_EQ(ids(store->items()), (QStringList{"glimpso-c.png", "T1", "glimpso-a.png"}));
    EXPECT_EQ(store->items().first().pixelWidth, 10);
    EXPECT_EQ(store->texts().size(), 1);
}

TEST_F(HistoryStoreTest, EveryChangeIsPublishedWhole)
{
    auto store = open();
    QSignalSpy published(store.get(), &HistoryStore::itemsChanged);
    store->addText("hello");
    ASSERT_EQ(published.size(), 1);
    EXPECT_EQ(published.first().first().value<QList<HistoryItem>>(), store->items());
}

TEST_F(HistoryStoreTest, RetentionHidesButNeverDeletes)
{
    home.settings().historyRetention.set(HistoryRetention::day);
    const QString old = capture("glimpso-old.png", now.addSecs(-25 * 3600));
    capture("glimpso-new.png", now.addSecs(-60));
    auto store = open();
    EXPECT_EQ(ids(store->items()), QStringList{"glimpso-new.png"});
    EXPECT_TRUE(QFile::exists(old));

    home.settings().historyRetention.set(HistoryRetention::week);
    refreshAndWait(*store);
    EXPECT_EQ(ids(store->items()), (QStringList{"glimpso-new.png", "glimpso-old.png"}));
}

TEST_F(HistoryStoreTest, TextBeyondTheReachIsKeptAndComesBack)
{
    home.settings().historyRetention.set(HistoryRetention::day);
    writeTextFile(QJsonDocument(QJsonArray{textJson("OLD", now.addDays(-3), "old text")}).toJson());
    auto store = open();
    EXPECT_TRUE(store->items().isEmpty());
    EXPECT_EQ(store->texts().size(), 1);
    home.settings().historyRetention.set(HistoryRetention::forever);
    refreshAndWait(*store);
    EXPECT_EQ(ids(store->items()), QStringList{"OLD"});
}

TEST_F(HistoryStoreTest, BadEntryBesideAGoodOneIsDroppedAndLostAtTheNextWrite)
{
    writeTextFile(R"([{"id":"GOOD","date":1,"kind":"text","text":"kept"},{"id":"BAD","date":"yesterday","kind":"text"}])");
    home.settings().historyRetention.set(HistoryRetention::forever);
    auto store = open();
    EXPECT_EQ(ids(store->texts()), QStringList{"GOOD"});
    EXPECT_TRUE(textFile().contains("BAD")); // reading alone changes nothing
    store->addText("new");
    EXPECT_FALSE(textFile().contains("BAD"));
    EXPECT_TRUE(textFile().contains("GOOD"));
}

TEST_F(HistoryStoreTest, CorruptOrTruncatedTextFileReadsEmptyAndIsOverwrittenOnlyByTheNextChange)
{
    for (const QByteArray &corrupt : {QByteArray("{not json"), QByteArray(R"([{"id":"A","date":1,"kind":"te)")}) {
        writeTextFile(corrupt);
        auto store = open();
        EXPECT_TRUE(store->texts().isEmpty());
        refreshAndWait(*store);
        store->addFile(home.savePath("glimpso-unrelated.txt"));
        EXPECT_EQ(textFile(), corrupt);
        store->addText("fresh");
        const QList<HistoryItem> written = HistoryItem::decodeList(textFile());
        ASSERT_EQ(written.size(), 1);
        EXPECT_EQ(written.first().text, "fresh");
    }
}

TEST_F(HistoryStoreTest, AddFilePutsTheCaptureFirstWithoutAListing)
{
    capture("glimpso-earlier.png", now.addSecs(-100));
    auto store = open();
    // Written after the listing and not added: only a listing would find it.
    capture("glimpso-unlisted.png", now);
    const QString fresh = home.savePath("glimpso-fresh.gif");
    HistoryTestFiles::writeGif(fresh, 12, 9);
    store->addFile(fresh);
    EXPECT_EQ(ids(store->items()), (QStringList{"glimpso-fresh.gif", "glimpso-earlier.png"}));
    const HistoryItem &item = store->items().first();
    EXPECT_EQ(item.kind, CaptureKind::gif);
    EXPECT_EQ(QSize(item.pixelWidth, item.pixelHeight), QSize(12, 9));
    EXPECT_LT(std::abs(item.date.secsTo(QDateTime::currentDateTimeUtc())), 60);
}

TEST_F(HistoryStoreTest, AddFileOfAListedPathLeavesOneEntryFirstDatedNow)
{
    const QString earlier = capture("glimpso-a.png", now.addSecs(-500));
    capture("glimpso-b.png", now.addSecs(-100));
    auto store = open();
    ASSERT_EQ(ids(store->items()), (QStringList{"glimpso-b.png", "glimpso-a.png"}));
    const QDateTime before = QDateTime::currentDateTimeUtc();
    store->addFile(earlier);
    EXPECT_EQ(ids(store->items()), (QStringList{"glimpso-a.png", "glimpso-b.png"}));
    EXPECT_GE(store->items().first().date, before);
}

TEST_F(HistoryStoreTest, AddFileOfAVideoReadsItsLength)
{
    auto store = open();
    const QString video = home.savePath("glimpso-clip.mp4");
    ASSERT_TRUE(HistoryTestFiles::writeVideo(video, 1.5));
    store->addFile(video);
    ASSERT_EQ(store->items().size(), 1);
    EXPECT_EQ(store->items().first().kind, CaptureKind::video);
    EXPECT_NEAR(store->items().first().seconds, 1.5, 0.11);
}

TEST_F(HistoryStoreTest, AddFileWithAnUnknownExtensionDoesNothing)
{
    auto store = open();
    QSignalSpy published(store.get(), &HistoryStore::itemsChanged);
    store->addFile(home.savePath("glimpso-notes.txt"));
    EXPECT_TRUE(store->items().isEmpty());
    EXPECT_EQ(published.size(), 0);
}

TEST_F(HistoryStoreTest, AddTextWithKeepHistoryOffDoesNothing)
{
    home.settings().keepHistory.set(false);
    auto store = open();
    QSignalSpy published(store.get(), &HistoryStore::itemsChanged);
    store->addText("secret");
    EXPECT_TRUE(store->items().isEmpty());
    EXPECT_TRUE(store->texts().isEmpty());
    EXPECT_EQ(published.size(), 0);
    EXPECT_FALSE(QFile::exists(home.supportFolder() + "/text.json"));
}

TEST_F(HistoryStoreTest, AddTextGoesFirstAndIntoTheFile)
{
    capture("glimpso-a.png", now.addSecs(-10));
    auto store = open();
    store->addText("line one\nline two");
    const HistoryItem &item = store->items().first();
    EXPECT_EQ(item.kind, CaptureKind::text);
    EXPECT_EQ(item.text, "line one\nline two");
    EXPECT_FALSE(item.path);
    EXPECT_EQ(item.id.size(), 36);
    EXPECT_EQ(store->items().size(), 2);
    EXPECT_EQ(HistoryItem::decodeList(textFile()), QList<HistoryItem>{item});
}

TEST_F(HistoryStoreTest, SavingCopiesOffChangesNothingInTheStore)
{
    // Whether Copy also saves a file is the output's business; what is saved is listed.
    home.settings().saveCopies.set(false);
    capture("glimpso-a.png", now.addSecs(-10));
    auto store = open();
    EXPECT_EQ(ids(store->items()), QStringList{"glimpso-a.png"});
}

TEST_F(HistoryStoreTest, ClearTextForgetsTextsAndLeavesFiles)
{
    const QString file = capture("glimpso-a.png", now.addSecs(-10));
    auto store = open();
    store->addText("one");
    store->addText("two");
    store->clearText();
    EXPECT_EQ(ids(store->items()), QStringList{"glimpso-a.png"});
    EXPECT_TRUE(store->texts().isEmpty());
    EXPECT_TRUE(HistoryItem::decodeList(textFile()).isEmpty());
    EXPECT_TRUE(QFile::exists(file));
}

TEST_F(HistoryStoreTest, DeletingATextForgetsIt)
{
    auto store = open();
    store->addText("keep");
    store->addText("drop");
    const HistoryItem drop = store->items().first();
    store->deleteItem(drop);
    EXPECT_EQ(store->items().size(), 1);
    EXPECT_EQ(store->items().first().text, "keep");
    const QList<HistoryItem> written = HistoryItem::decodeList(textFile());
    ASSERT_EQ(written.size(), 1);
    EXPECT_EQ(written.first().text, "keep");
}

TEST_F(HistoryStoreTest, DeletingAFileMovesItToTheTrash)
{
    const QString file = capture("glimpso-a.png", now.addSecs(-10));
    auto store = open();
    ASSERT_EQ(store->items().size(), 1);
    int notices = 0;
    store->onNotice = [&](const QString &, const QString &, double) { ++notices; };
    store->deleteItem(store->items().first());
    ASSERT_TRUE(waitUntil([&] { return store->items().isEmpty(); }));
    EXPECT_FALSE(QFile::exists(file));
    EXPECT_TRUE(QFile::exists(home.trashFilesFolder() + "/glimpso-a.png"));
    EXPECT_EQ(notices, 0);
}

TEST_F(HistoryStoreTest, AFailedMoveToTheTrashKeepsTheItemAndTellsTheUser)
{
    const QString file = capture("glimpso-a.png", now.addSecs(-10));
    auto store = open();
    ASSERT_EQ(store->items().size(), 1);
    // Gone behind the program's back: the Trash can't take it.
    QFile::remove(file);
    QString title, body;
    double seconds = 0;
    store->onNotice = [&](const QString &t, const QString &b, double s) { title = t, body = b, seconds = s; };
    store->deleteItem(store->items().first());
    ASSERT_TRUE(waitUntil([&] { return !title.isEmpty(); }));
    EXPECT_EQ(title, "Couldn't move it to the Trash");
    EXPECT_FALSE(body.isEmpty());
    EXPECT_EQ(seconds, 2.0);
    EXPECT_EQ(ids(store->items()), QStringList{"glimpso-a.png"});
}

TEST_F(HistoryStoreTest, StartMovesTheOldHistoryInAndKeepsItsTexts)
{
    const QString old = home.supportFolder() + "/History";
    HistoryTestFiles::writePng(old + "/copy.png", 7, 7);
    const QDateTime imageDate = now.addSecs(-3600);
    const QDateTime textDate = now.addSecs(-60);
    writeTextFile(QJsonDocument(QJsonArray{textJson("EXISTING", now.addSecs(-7200), "earlier text")}).toJson());
    const QJsonArray index{
        QJsonObject{{"date", HistoryItem::secondsSinceReferenceDate(imageDate)}, {"kind", "image"}, {"fileName", "copy.png"}},
        QJsonObject{{"date", HistoryItem::secondsSinceReferenceDate(textDate)}, {"kind", "text"}, {"text", "old text"}}};
    HistoryTestFiles::writeBytes(old + "/history.json", QJsonDocument(index).toJson());

    auto store = open();
    EXPECT_FALSE(QDir(old).exists());
    ASSERT_EQ(store->items().size(), 3);
    EXPECT_EQ(store->items()[0].text, "old text");
    EXPECT_EQ(store->items()[1].kind, CaptureKind::image);
    EXPECT_TRUE(QFileInfo(*store->items()[1].path).fileName().startsWith("glimpso-"));
    EXPECT_EQ(store->items()[2].id, "EXISTING");
    // The file holds the texts newest first.
    const QList<HistoryItem> written = HistoryItem::decodeList(textFile());
    ASSERT_EQ(written.size(), 2);
    EXPECT_EQ(written[0].text, "old text");
    EXPECT_EQ(written[1].id, "EXISTING");
}

TEST_F(HistoryStoreTest, CopyPutsTextOrFileAndPictureOnTheClipboard)
{
    const QString file = capture("glimpso-a.png", now.addSecs(-10));
    auto store = open();
    store->addText("copied words");
    QClipboard *clipboard = QGuiApplication::clipboard();

    store->copy(store->items()[0]);
    EXPECT_EQ(clipboard->text(), "copied words");

    store->copy(store->items()[1]);
    const QMimeData *data = clipboard->mimeData();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(file)});
    EXPECT_EQ(qvariant_cast<QImage>(data->imageData()).size(), QSize(10, 5));
}

} // namespace
