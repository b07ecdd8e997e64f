#include "history/FileStatus.h"

#include "HistoryTestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

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

TEST_F(FileStatusOnDisk, IdentityFollowsContentsAndReplacement)
{
    HistoryTestFiles::writeBytes(path("a.png"), "xy");
    const auto before = FileStatus::of(path("a.png"));
    ASSERT_TRUE(before);
    EXPECT_EQ(before->identity.size, 2);
    EXPECT_NE(before->identity.inode, 0u);
    EXPECT_NE(before->identity.modifiedNs, 0);
    EXPECT_EQ(FileStatus::of(path("a.png"))->identity, before->identity);

    HistoryTestFiles::writeBytes(path("a.png"), "xyz");
    EXPECT_EQ(FileStatus::of(path("a.png"))->identity.size, 3);
    EXPECT_EQ(FileStatus::of(path("a.png"))->identity.inode, before->identity.inode);

    HistoryTestFiles::writeBytes(path("b.png"), "xyz");
    ASSERT_EQ(::rename(QFile::encodeName(path("b.png")).constData(), QFile::encodeName(path("a.png")).constData()), 0);
    EXPECT_NE(FileStatus::of(path("a.png"))->identity.inode, before->identity.inode);
}

TEST_F(FileStatusOnDisk, AnEntryLookedUpInItsFolderIsTheSameAsByPath)
{
    HistoryTestFiles::writeBytes(path("a.png"), "x");
    QFile::link(path("a.png"), path("link.png"));
    const int folder = ::open(QFile::encodeName(dir.path()).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(folder, 0);
    const auto inFolder = FileStatus::in(folder, "a.png");
    const auto link = FileStatus::in(folder, "link.png");
    const auto missing = FileStatus::in(folder, "missing.png");
    ::close(folder);
    ASSERT_TRUE(inFolder && link);
    EXPECT_EQ(inFolder->identity, FileStatus::of(path("a.png"))->identity);
    EXPECT_EQ(inFolder->creationDate, FileStatus::of(path("a.png"))->creationDate);
    EXPECT_TRUE(inFolder->regularFile);
    EXPECT_FALSE(link->regularFile);
    EXPECT_FALSE(missing);
}

} // namespace
