#include "history/HeaderFile.h"

#include "HistoryTestFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

class HeaderFileTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const char *name) const { return dir.filePath(QString::fromLatin1(name)); }
};

TEST_F(HeaderFileTest, ReadsAtOffsetsAndAsAStream)
{
    HistoryTestFiles::writeBytes(path("a.bin"), "0123456789");
    HeaderFile file(path("a.bin"));
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.size(), 10);
    char buffer[4] = {};
    EXPECT_EQ(file.readAt(6, buffer, 4), 4);
    EXPECT_EQ(QByteArray(buffer, 4), "6789");
    EXPECT_EQ(file.readAt(8, buffer, 4), 2);
    EXPECT_EQ(file.position(), 0);
    EXPECT_EQ(file.read(buffer, 3), 3);
    EXPECT_EQ(QByteArray(buffer, 3), "012");
    EXPECT_EQ(file.position(), 3);
    EXPECT_TRUE(file.seek(9));
    EXPECT_EQ(file.read(buffer, 3), 1);
    EXPECT_EQ(buffer[0], '9');
    EXPECT_EQ(file.read(buffer, 3), 0);
    EXPECT_FALSE(file.seek(-1));
}

TEST_F(HeaderFileTest, OnlyRegularFilesOpenAndAPipeDoesNotWait)
{
    ASSERT_EQ(mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    EXPECT_FALSE(HeaderFile(path("pipe")).isOpen());
    EXPECT_FALSE(HeaderFile(dir.path()).isOpen());
    HeaderFile missing(path("missing"));
    EXPECT_FALSE(missing.isOpen());
    char byte = 0;
    EXPECT_EQ(missing.readAt(0, &byte, 1), -1);
}

} // namespace
