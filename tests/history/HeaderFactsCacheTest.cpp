#include "history/HeaderFactsCache.h"

#include "HistoryTestFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class HeaderFactsCacheTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    const QString folder = QStringLiteral("/home/someone/Pictures/Screenshots");
    QString cacheFile() const { return dir.filePath("cache/glimpso/history-headers"); }

    static FileStatus::Identity identity()
    {
        return {.device = 2049, .inode = 1234, .size = 5678, .modifiedNs = 1'700'000'000'123'456'789,
                .changedNs = 1'700'000'001'000'000'000};
    }
    static HeaderFactsCache::Facts facts() { return {1920, 1080, 0}; }

    HeaderFactsCache filled() const
    {
        HeaderFactsCache cache(folder);
        cache.insert("glimpso-a.png", identity(), facts());
        cache.insert("glimpso-b.mp4", identity(), {0, 0, 2.5});
        return cache;
    }
    QByteArray savedBytes() const
    {
        EXPECT_TRUE(filled().save(cacheFile()));
        QFile file(cacheFile());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
};

TEST_F(HeaderFactsCacheTest, SavedFactsComeBackForTheSameFolder)
{
    ASSERT_TRUE(filled().save(cacheFile()));
    const HeaderFactsCache loaded = HeaderFactsCache::load(cacheFile(), folder);
    EXPECT_EQ(loaded, filled());
    EXPECT_EQ(loaded.find("glimpso-a.png", identity()), facts());
    EXPECT_EQ(loaded.find("glimpso-b.mp4", identity())->seconds, 2.5);
}

TEST_F(HeaderFactsCacheTest, FactsAreOnlyForTheVerySameFile)
{
    const HeaderFactsCache cache = filled();
    const auto changed = [&](auto change) {
        FileStatus::Identity other = identity();
        change(other);
        return cache.find("glimpso-a.png", other);
    };
    EXPECT_FALSE(changed([](auto &id) { id.size += 1; }));
    EXPECT_FALSE(changed([](auto &id) { id.modifiedNs += 1; }));
    EXPECT_FALSE(changed([](auto &id) { id.changedNs += 1; }));
    EXPECT_FALSE(changed([](auto &id) { id.inode += 1; }));
    EXPECT_FALSE(changed([](auto &id) { id.device += 1; }));
    EXPECT_FALSE(cache.find("glimpso-c.png", identity()));
    EXPECT_TRUE(changed([](auto &) {}));
}

TEST_F(HeaderFactsCacheTest, NoFileIsAnEmptyCache)
{
    const HeaderFactsCache loaded = HeaderFactsCache::load(cacheFile(), folder);
    EXPECT_EQ(loaded.size(), 0);
    EXPECT_EQ(loaded.folder(), folder);
}

TEST_F(HeaderFactsCacheTest, ACacheOfAnotherFolderIsEmpty)
{
    ASSERT_TRUE(filled().save(cacheFile()));
    const HeaderFactsCache loaded = HeaderFactsCache::load(cacheFile(), folder + "-elsewhere");
    EXPECT_EQ(loaded.size(), 0);
    EXPECT_FALSE(loaded.find("glimpso-a.png", identity()));
}

TEST_F(HeaderFactsCacheTest, DamagedOrTruncatedFilesAreEmpty)
{
    const QByteArray good = savedBytes();
    ASSERT_EQ(HeaderFactsCache::load(cacheFile(), folder).size(), 2);

    QByteArray flipped = good;
    flipped[flipped.size() / 2] = char(flipped[flipped.size() / 2] ^ 0x20);
    QByteArray otherVersion = good;
    otherVersion[otherVersion.indexOf('\n') + 4] = char(otherVersion[otherVersion.indexOf('\n') + 4] + 1);
    const QList<QByteArray> damaged{good.left(good.size() - 1), good.left(good.size() / 2), good.left(10),
                                    QByteArray(), flipped, otherVersion, QByteArray("[{\"not\": \"a cache\"}]"),
                                    QByteArray(good + "x")};
    for (const QByteArray &bad : damaged) {
        HistoryTestFiles::writeBytes(cacheFile(), bad);
        EXPECT_EQ(HeaderFactsCache::load(cacheFile(), folder).size(), 0) << bad.size() << " bytes";
    }
}

TEST_F(HeaderFactsCacheTest, AFolderThatCannotBeMadeIsNotWrittenTo)
{
    HistoryTestFiles::writeBytes(dir.filePath("not-a-folder"), "x");
    EXPECT_FALSE(filled().save(dir.filePath("not-a-folder/glimpso/history-headers")));
}

} // namespace
