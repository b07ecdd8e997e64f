#include "history/FileStatus.h"

#include "HistoryTestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

struct statx withTimes(unsigned mask, qint64 birthSeconds, qint64 modifiedSeconds)
{
    struct statx facts {};
    facts.stx_mask = mask;
    facts.stx_btime.tv_sec = birthSeconds;
    facts.stx_mtime.tv_sec = modifiedSeconds;
    return facts;
}

QDateTime at(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc());
}

TEST(FileStatus, BirthTimeIsTheCreationDate)
{
    EXPECT_EQ(FileStatus::creationDateFrom(withTimes(STATX_BTIME | STATX_MTIME, 1000, 5000)), at(1000));
}

TEST(FileStatus, AnEarlierModificationTimeIsTheCaptureDateKeptByACopy)
{
    EXPECT_EQ(FileStatus::creationDateFrom(withTimes(STATX_BTIME | STATX_MTIME, 5000, 1000)), at(1000));
}

TEST(FileStatus, WithoutBirthTimeTheModificationTime)
{
    EXPECT_EQ(FileStatus::creationDateFrom(withTimes(STATX_MTIME, 1000, 5000)), at(5000));
}

TEST(FileStatus, WithNeitherThereIsNoDate)
{
    EXPECT_FALSE(FileStatus::creationDateFrom(withTimes(STATX_TYPE, 1000, 5000)));
}

TEST(FileStatus, KeepsMilliseconds)
{
    struct statx facts = withTimes(STATX_MTIME, 1000, 0);
    facts.stx_mtime.tv_sec = 1000;
    facts.stx_mtime.tv_nsec = 250'000'000;
    EXPECT_EQ(FileStatus::creationDateFrom(facts), at(1000).addMSecs(250));
}

class FileStatusOnDisk : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const char *name) const { return dir.filePath(QString::fromLatin1(name)); }
};

TEST_F(FileStatusOnDisk, RegularFileHasADateNearNow)
{
    HistoryTestFiles::writeBytes(path("a.png"), "x");
    const auto status = FileStatus::of(path("a.png"));
    ASSERT_TRUE(status);
    EXPECT_TRUE(status->regularFile);
    ASSERT_TRUE(status->creationDate);
    EXPECT_LT(std::abs(status->creationDate->secsTo(QDateTime::currentDateTimeUtc())), 60);
}

TEST_F(FileStatusOnDisk, FoldersLinksAndPipesAreNotRegularFiles)
{
    HistoryTestFiles::writeBytes(path("target.png"), "x");
    QDir().mkpath(path("folder.png"));
    QFile::link(path("target.png"), path("link.png"));
    ASSERT_EQ(mkfifo(QFile::encodeName(path("pipe.png")).constData(), 0600), 0);
    for (const char *name : {"folder.png", "link.png", "pipe.png"}) {
        const auto status = FileStatus::of(path(name));
        ASSERT_TRUE(status) << name;
        EXPECT_FALSE(status->regularFile) << name;
    }
}

TEST_F(FileStatusOnDisk, MissingEntryAndDanglingLink)
{
    EXPECT_FALSE(FileStatus::of(path("missing.png")));
    QFile::link(path("missing.png"), path("dangling.png"));
    const auto status = FileStatus::of(path("dangling.png"));
    ASSERT_TRUE(status);
    EXPECT_FALSE(status->regularFile);
}

TEST_F(FileStatusOnDisk, ASetModificationTimeInThePastIsTheCreationDate)
{
    HistoryTestFiles::writeBytes(path("old.png"), "x");
    const QDateTime past = QDateTime::currentDateTimeUtc().addDays(-3);
    HistoryTestFiles::setDate(path("old.png"), past);
    const auto status = FileStatus::of(path("old.png"));
    ASSERT_TRUE(status && status->creationDate);
    EXPECT_LT(std::abs(status->creationDate->msecsTo(past)), 1000);
}

} // namespace
