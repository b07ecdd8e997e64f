#include "history/HistoryScanner.h"

#include "history/HeaderFactsCache.h"

#include "HistoryTestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSize>
#include <QTemporaryDir>
#include <QTimeZone>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace {

class HistoryScannerTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const QString &name) const { return dir.filePath(name); }

    QStringList listedNames(const std::optional<QDateTime> &since = std::nullopt) const
    {
        QStringList names;
        for (const HistoryItem &item : HistoryScanner::list(dir.path(), since))
            names << QFileInfo(*item.path).fileName();
        names.sort();
        return names;
    }
};

TEST_F(HistoryScannerTest, CutoffIsNowMinusTheReach)
{
    const QDateTime now(QDate(2026, 3, 1), QTime(12, 0), QTimeZone::utc());
    EXPECT_EQ(HistoryScanner::cutoff(HistoryRetention::day, now), now.addSecs(-86400));
    EXPECT_EQ(HistoryScanner::cutoff(HistoryRetention::week, now), now.addSecs(-604800));
    EXPECT_EQ(HistoryScanner::cutoff(HistoryRetention::month, now), now.addSecs(-2592000));
    EXPECT_FALSE(HistoryScanner::cutoff(HistoryRetention::forever, now));
}

TEST_F(HistoryScannerTest, ExtensionCaseIsIgnoredButThePrefixCaseIsNot)
{
    HistoryTestFiles::writePng(path("glimpso-a.PNG"), 4, 4);
    HistoryTestFiles::writePng(path("GLIMPSO-b.png"), 4, 4);
    HistoryTestFiles::writePng(path("Glimpso-c.png"), 4, 4);
    HistoryTestFiles::writePng(path("screenshot-d.png"), 4, 4);
    HistoryTestFiles::writePng(path("d-glimpso-e.png"), 4, 4);
    EXPECT_EQ(listedNames(), QStringList{"glimpso-a.PNG"});
}

TEST_F(HistoryScannerTest, UnknownExtensionsAndNamesWithoutOneAreNotCaptures)
{
    HistoryTestFiles::writeBytes(path("glimpso-a.txt"), "x");
    HistoryTestFiles::writeBytes(path("glimpso-b.webp"), "x");
    HistoryTestFiles::writeBytes(path("glimpso-c"), "x");
    HistoryTestFiles::writeBytes(path("glimpso-d.png.part"), "x");
    HistoryTestFiles::writeBytes(path(".glimpso-e.png"), "x");
    HistoryTestFiles::writePng(path("glimpso-f.png"), 4, 4);
    EXPECT_EQ(listedNames(), QStringList{"glimpso-f.png"});
}

TEST_F(HistoryScannerTest, AFolderNamedLikeACaptureGivesNoItem)
{
    QDir().mkpath(path("glimpso-2026-01-01-000000.png"));
    QDir().mkpath(path("glimpso-x.mp4"));
    HistoryTestFiles::writePng(path("glimpso-x.png/glimpso-inside.png"), 4, 4);
    EXPECT_TRUE(listedNames().isEmpty());
}

TEST_F(HistoryScannerTest, LinksPipesAndUnreadableFilesDoNotBreakTheListing)
{
    HistoryTestFiles::writePng(path("glimpso-good.png"), 8, 6);
    HistoryTestFiles::writePng(path("elsewhere.png"), 8, 6);
    QFile::link(path("elsewhere.png"), path("glimpso-link.png"));
    QFile::link(path("nowhere.png"), path("glimpso-dangling.png"));
    // Opening a pipe would wait for a writer for ever; it must not be opened.
    ASSERT_EQ(mkfifo(QFile::encodeName(path("glimpso-pipe.gif")).constData(), 0600), 0);
    HistoryTestFiles::writePng(path("glimpso-locked.png"), 8, 6);
    ASSERT_EQ(chmod(QFile::encodeName(path("glimpso-locked.png")).constData(), 0), 0);
    HistoryTestFiles::writeBytes(path("glimpso-damaged.jpg"), QByteArray(100, '\xff'));

    const QList<HistoryItem> items = HistoryScanner::list(dir.path(), std::nullopt);
    QStringList names;
    for (const HistoryItem &item : items)
        names << QFileInfo(*item.path).fileName();
    names.sort();
    EXPECT_EQ(names, (QStringList{"glimpso-damaged.jpg", "glimpso-good.png", "glimpso-locked.png"}));
    QMap<QString, QSize> sizes;
    for (const HistoryItem &item : items)
        sizes.insert(QFileInfo(*item.path).fileName(), QSize(item.pixelWidth, item.pixelHeight));
    EXPECT_EQ(sizes.value("glimpso-good.png"), QSize(8, 6));
    EXPECT_EQ(sizes.value("glimpso-damaged.jpg"), QSize(0, 0));
    // Root reads a file without permissions all the same; anyone else gets no size.
    if (geteuid() != 0) {
        EXPECT_EQ(sizes.value("glimpso-locked.png"), QSize(0, 0));
    }
}

TEST_F(HistoryScannerTest, AFolderThatCannotBeListedGivesNothing)
{
    EXPECT_TRUE(HistoryScanner::list(path("missing"), std::nullopt).isEmpty());
    HistoryTestFiles::writeBytes(path("plain-file"), "x");
    EXPECT_TRUE(HistoryScanner::list(path("plain-file"), std::nullopt).isEmpty());
}

TEST_F(HistoryScannerTest, ItemOfAFile)
{
    HistoryTestFiles::writeJpeg(path("glimpso-2026-02-03-040506.jpg"), 30, 20);
    const auto item = HistoryScanner::scan(path("glimpso-2026-02-03-040506.jpg"), std::nullopt);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->id, path("glimpso-2026-02-03-040506.jpg"));
    EXPECT_EQ(item->path, item->id);
    EXPECT_EQ(item->kind, CaptureKind::image);
    EXPECT_EQ(item->pixelWidth, 30);
    EXPECT_EQ(item->pixelHeight, 20);
    EXPECT_FALSE(item->text);
    EXPECT_EQ(item->seconds, 0);
}

TEST_F(HistoryScannerTest, KindsAndMeasuresOfEachFormat)
{
    HistoryTestFiles::writeGif(path("glimpso-a.gif"), 20, 10);
    ASSERT_TRUE(HistoryTestFiles::writeVideo(path("glimpso-b.mp4"), 1.5));
    ASSERT_TRUE(HistoryTestFiles::writeHeic(path("glimpso-c.heic"), 32, 16));
    const auto gif = HistoryScanner::scan(path("glimpso-a.gif"), std::nullopt);
    const auto video = HistoryScanner::scan(path("glimpso-b.mp4"), std::nullopt);
    const auto heic = HistoryScanner::scan(path("glimpso-c.heic"), std::nullopt);
    ASSERT_TRUE(gif && video && heic);
    EXPECT_EQ(gif->kind, CaptureKind::gif);
    EXPECT_EQ(QSize(gif->pixelWidth, gif->pixelHeight), QSize(20, 10));
    EXPECT_EQ(video->kind, CaptureKind::video);
    EXPECT_NEAR(video->seconds, 1.5, 0.11);
    EXPECT_EQ(QSize(video->pixelWidth, video->pixelHeight), QSize(0, 0));
    EXPECT_EQ(heic->kind, CaptureKind::image);
    EXPECT_EQ(QSize(heic->pixelWidth, heic->pixelHeight), QSize(32, 16));
}

TEST_F(HistoryScannerTest, CaptureOlderThanTheCutoffIsLeftOut)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    HistoryTestFiles::writePng(path("glimpso-old.png"), 4, 4);
    HistoryTestFiles::writePng(path("glimpso-new.png"), 4, 4);
    HistoryTestFiles::setDate(path("glimpso-old.png"), now.addSecs(-25 * 3600));
    EXPECT_EQ(listedNames(HistoryScanner::cutoff(HistoryRetention::day, now)), QStringList{"glimpso-new.png"});
    EXPECT_EQ(listedNames(HistoryScanner::cutoff(HistoryRetention::week, now)),
              (QStringList{"glimpso-new.png", "glimpso-old.png"}));
}

TEST_F(HistoryScannerTest, CaptureExactlyAtTheCutoffStays)
{
    const QDateTime date(QDate(2026, 3, 1), QTime(12, 0), QTimeZone::utc());
    const FileStatus status{true, date};
    EXPECT_TRUE(HistoryScanner::itemFor(path("glimpso-a.png"), status, date));
    EXPECT_FALSE(HistoryScanner::itemFor(path("glimpso-a.png"), status, date.addMSecs(1)));
}

TEST_F(HistoryScannerTest, NoDateFromTheFileSystemIsOlderThanAnyCutoff)
{
    const FileStatus undated{true, std::nullopt};
    const QDateTime now = QDateTime::currentDateTimeUtc();
    EXPECT_FALSE(HistoryScanner::itemFor(path("glimpso-a.png"), undated, HistoryScanner::cutoff(HistoryRetention::month, now)));
    const auto forever = HistoryScanner::itemFor(path("glimpso-a.png"), undated, std::nullopt);
    ASSERT_TRUE(forever);
    EXPECT_EQ(forever->date, HistoryScanner::distantPast());
}

TEST_F(HistoryScannerTest, EntryThatCannotBeLookedAtGivesNoItem)
{
    EXPECT_FALSE(HistoryScanner::itemFor(path("glimpso-a.png"), std::nullopt, std::nullopt));
    EXPECT_FALSE(HistoryScanner::itemFor(path("glimpso-a.png"), FileStatus{false, QDateTime::currentDateTimeUtc()},
                                         std::nullopt));
}

TEST_F(HistoryScannerTest, ListingKeepsEveryCaptureOfALargeFolder)
{
    for (int i = 0; i < 300; ++i)
        HistoryTestFiles::writeBytes(path(QStringLiteral("glimpso-%1.png").arg(i, 4, 10, QLatin1Char('0'))), "x");
    EXPECT_EQ(HistoryScanner::list(dir.path(), std::nullopt).size(), 300);
}

} // namespace

namespace {

// Listings through the header cache give what listings without it give.
class HistoryScannerCacheTest : public HistoryScannerTest
{
protected:
    QString cacheFile() const { return dir.filePath("cache/history-headers"); }
    QString folder() const { return dir.filePath("save"); }
    QString capture(const QString &name) const { return folder() + u'/' + name; }

    void SetUp() override { QDir().mkpath(folder()); }

    QMap<QString, QSize> sizes(const QString &cache) const
    {
        QMap<QString, QSize> result;
        for (const HistoryItem &item : HistoryScanner::list(folder(), std::nullopt, cache))
            result.insert(QFileInfo(*item.path).fileName(), QSize(item.pixelWidth, item.pixelHeight));
        return result;
    }
    // A cache that says every listed file is 7 x 9: what a listing takes from it shows.
    void plantFakeSizes() const
    {
        HeaderFactsCache cache(folder());
        for (const QString &name : HistoryScanner::candidateNames(folder()))
            cache.insert(name, FileStatus::of(capture(name))->identity, {7, 9, 0});
        ASSERT_TRUE(cache.save(cacheFile()));
    }
};

TEST_F(HistoryScannerCacheTest, ListingWritesTheCacheAndTakesUnchangedFilesFromIt)
{
    HistoryTestFiles::writePng(capture("glimpso-a.png"), 30, 20);
    ASSERT_TRUE(HistoryTestFiles::writeVideo(capture("glimpso-b.mp4"), 1.5));
    const QList<HistoryItem> uncached = HistoryScanner::list(folder(), std::nullopt);
    EXPECT_EQ(HistoryScanner::list(folder(), std::nullopt, cacheFile()), uncached);
    const HeaderFactsCache written = HeaderFactsCache::load(cacheFile(), folder());
    EXPECT_EQ(written.size(), 2);
    EXPECT_EQ(written.find("glimpso-a.png", FileStatus::of(capture("glimpso-a.png"))->identity),
              (HeaderFactsCache::Facts{30, 20, 0}));
    EXPECT_EQ(HistoryScanner::list(folder(), std::nullopt, cacheFile()), uncached);

    plantFakeSizes();
    EXPECT_EQ(sizes(cacheFile()).value("glimpso-a.png"), QSize(7, 9));
}

TEST_F(HistoryScannerCacheTest, AChangedSizeModificationTimeOrInodeIsReadAgain)
{
    HistoryTestFiles::writePng(capture("glimpso-size.png"), 30, 20);
    HistoryTestFiles::writePng(capture("glimpso-time.png"), 30, 20);
    HistoryTestFiles::writePng(capture("glimpso-inode.png"), 30, 20);
    HistoryTestFiles::writePng(capture("glimpso-same.png"), 30, 20);
    const QDateTime date = QDateTime::currentDateTimeUtc().addSecs(-3600);
    HistoryTestFiles::setDate(capture("glimpso-inode.png"), date);
    plantFakeSizes();

    HistoryTestFiles::writePng(capture("glimpso-size.png"), 300, 200);
    HistoryTestFiles::setDate(capture("glimpso-time.png"), date);
    // The same bytes and date in a new file put in its place, as an atomic save does.
    ASSERT_TRUE(QFile::copy(capture("glimpso-inode.png"), capture("inode.tmp")));
    HistoryTestFiles::setDate(capture("inode.tmp"), date);
    ASSERT_EQ(::rename(QFile::encodeName(capture("inode.tmp")).constData(),
                       QFile::encodeName(capture("glimpso-inode.png")).constData()),
              0);

    const QMap<QString, QSize> listed = sizes(cacheFile());
    EXPECT_EQ(listed.value("glimpso-size.png"), QSize(300, 200));
    EXPECT_EQ(listed.value("glimpso-time.png"), QSize(30, 20));
    EXPECT_EQ(listed.value("glimpso-inode.png"), QSize(30, 20));
    EXPECT_EQ(listed.value("glimpso-same.png"), QSize(7, 9));
    // What was read again is what the cache now holds.
    EXPECT_EQ(sizes(cacheFile()).value("glimpso-size.png"), QSize(300, 200));
}

TEST_F(HistoryScannerCacheTest, ADamagedCacheGivesTheSameListingAndIsWrittenAnew)
{
    HistoryTestFiles::writePng(capture("glimpso-a.png"), 30, 20);
    HistoryTestFiles::writeGif(capture("glimpso-b.gif"), 20, 10);
    const QList<HistoryItem> uncached = HistoryScanner::list(folder(), std::nullopt);
    HistoryTestFiles::writeBytes(cacheFile(), "glimpso history headers\n\x00\x00\x00\x01 garbage");
    EXPECT_EQ(HistoryScanner::list(folder(), std::nullopt, cacheFile()), uncached);
    EXPECT_EQ(HeaderFactsCache::load(cacheFile(), folder()).size(), 2);
}

TEST_F(HistoryScannerCacheTest, ACacheThatCannotBeWrittenGivesTheSameListing)
{
    HistoryTestFiles::writePng(capture("glimpso-a.png"), 30, 20);
    HistoryTestFiles::writeBytes(dir.filePath("plain-file"), "x");
    const QString unwritable = dir.filePath("plain-file/history-headers");
    EXPECT_EQ(HistoryScanner::list(folder(), std::nullopt, unwritable), HistoryScanner::list(folder(), std::nullopt));
    EXPECT_EQ(sizes(unwritable).value("glimpso-a.png"), QSize(30, 20));
}

TEST_F(HistoryScannerCacheTest, GoneFilesLeaveTheCacheAndThoseBeyondTheReachStay)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    HistoryTestFiles::writePng(capture("glimpso-gone.png"), 30, 20);
    HistoryTestFiles::writePng(capture("glimpso-old.png"), 30, 20);
    HistoryTestFiles::setDate(capture("glimpso-old.png"), now.addSecs(-25 * 3600));
    HistoryScanner::list(folder(), std::nullopt, cacheFile());
    ASSERT_EQ(HeaderFactsCache::load(cacheFile(), folder()).size(), 2);

    QFile::remove(capture("glimpso-gone.png"));
    EXPECT_TRUE(HistoryScanner::list(folder(), HistoryScanner::cutoff(HistoryRetention::day, now), cacheFile()).isEmpty());
    const HeaderFactsCache cache = HeaderFactsCache::load(cacheFile(), folder());
    EXPECT_EQ(cache.size(), 1);
    EXPECT_TRUE(cache.find("glimpso-old.png", FileStatus::of(capture("glimpso-old.png"))->identity));
}

} // namespace
