#include "history/VideoDurationReader.h"

#include "HistoryTestFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class VideoDurationReaderTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const char *name) const { return dir.filePath(QString::fromLatin1(name)); }
};

TEST_F(VideoDurationReaderTest, Mp4AndMovLengths)
{
    ASSERT_TRUE(HistoryTestFiles::writeVideo(path("a.mp4"), 2.5));
    ASSERT_TRUE(HistoryTestFiles::writeVideo(path("b.mov"), 1.2));
    EXPECT_NEAR(VideoDurationReader::seconds(path("a.mp4")), 2.5, 0.11);
    EXPECT_NEAR(VideoDurationReader::seconds(path("b.mov")), 1.2, 0.11);
}

TEST_F(VideoDurationReaderTest, FragmentedMp4LengthFromItsFragments)
{
    // The recorder writes fragmented MP4, whose movie header holds no length.
    ASSERT_TRUE(HistoryTestFiles::writeVideo(
        path("frag.mp4"), 3.0,
        {"-movflags", "frag_keyframe+empty_moov+default_base_moof", "-frag_duration", "1000000"}));
    EXPECT_NEAR(VideoDurationReader::seconds(path("frag.mp4")), 3.0, 0.11);
}

TEST_F(VideoDurationReaderTest, VideoWithoutAUsableLengthIsZero)
{
    HistoryTestFiles::writeBytes(path("garbage.mp4"), QByteArray(2000, '\x07'));
    HistoryTestFiles::writeBytes(path("empty.mp4"), {});
    EXPECT_EQ(VideoDurationReader::seconds(path("garbage.mp4")), 0);
    EXPECT_EQ(VideoDurationReader::seconds(path("empty.mp4")), 0);
    EXPECT_EQ(VideoDurationReader::seconds(path("missing.mp4")), 0);
}

TEST_F(VideoDurationReaderTest, CutOffRecordingIsZeroNotACrash)
{
    // A recording whose end never reached the disk: header and a little data.
    ASSERT_TRUE(HistoryTestFiles::writeVideo(path("whole.mp4"), 2.0,
                                             {"-movflags", "frag_keyframe+empty_moov+default_base_moof"}));
    QFile whole(path("whole.mp4"));
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    HistoryTestFiles::writeBytes(path("cut.mp4"), whole.read(700));
    EXPECT_EQ(VideoDurationReader::seconds(path("cut.mp4")), 0);
}

} // namespace
