#include "history/ImageHeaderReader.h"

#include "HistoryTestFiles.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class ImageHeaderReaderTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const char *name) const { return dir.filePath(QString::fromLatin1(name)); }
};

TEST_F(ImageHeaderReaderTest, PngAndJpegSizesFromTheirHeaders)
{
    HistoryTestFiles::writePng(path("a.png"), 123, 45);
    HistoryTestFiles::writeJpeg(path("b.jpg"), 67, 89);
    HistoryTestFiles::writeJpeg(path("c.JPEG"), 10, 11);
    EXPECT_EQ(ImageHeaderReader::pixelSize(path("a.png")), QSize(123, 45));
    EXPECT_EQ(ImageHeaderReader::pixelSize(path("b.jpg")), QSize(67, 89));
    EXPECT_EQ(ImageHeaderReader::pixelSize(path("c.JPEG")), QSize(10, 11));
}

TEST_F(ImageHeaderReaderTest, GifSizeFromTheLogicalScreen)
{
    HistoryTestFiles::writeGif(path("a.gif"), 300, 7);
    EXPECT_EQ(ImageHeaderReader::pixelSize(path("a.gif")), QSize(300, 7));
    EXPECT_EQ(ImageHeaderReader::gifSize(path("a.gif")), QSize(300, 7));
}

TEST_F(ImageHeaderReaderTest, ShortOrForeignGifHeaderGivesNoSize)
{
    HistoryTestFiles::writeBytes(path("short.gif"), "GIF89a\x10");
    HistoryTestFiles::writeBytes(path("png.gif"), "\x89PNG\r\n\x1a\n0000000000");
    EXPECT_EQ(ImageHeaderReader::pixelSize(path("short.gif")), QSize(0, 0));
    EXPECT_EQ(ImageHeaderReader::pixelSize(path("png.gif")), QSize(0, 0));
}

TEST_F(ImageHeaderReaderTest, HeicSizeThroughLibheif)
{
    ASSERT_TRUE(HistoryTestFiles::writeHeic(path("a.heic"), 96, 64)) << "libheif has no HEVC encoder";
    EXPECT_EQ(ImageHeaderReader::pixelSize(path("a.heic")), QSize(96, 64));
}

TEST_F(ImageHeaderReaderTest, DamagedMissingOrEmptyFilesGiveNoSize)
{
    HistoryTestFiles::writeBytes(path("garbage.png"), QByteArray(4000, 'z'));
    HistoryTestFiles::writeBytes(path("empty.jpg"), {});
    HistoryTestFiles::writeBytes(path("garbage.heic"), "....ftypheic....");
    for (const char *name : {"garbage.png", "empty.jpg", "garbage.heic", "missing.png"})
        EXPECT_EQ(ImageHeaderReader::pixelSize(path(name)), QSize(0, 0)) << name;
}

TEST_F(ImageHeaderReaderTest, TruncatedPngStillGivesItsHeaderSize)
{
    // Only what comes before the picture data is read: a file cut off in the
    // middle of its data still has a size.
    HistoryTestFiles::writePng(path("whole.png"), 40, 30);
    QFile whole(path("whole.png"));
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    HistoryTestFiles::writeBytes(path("cut.png"), whole.read(whole.size() / 2));
    EXPECT_EQ(ImageHeaderReader::pixelSize(path("cut.png")), QSize(40, 30));
}

} // namespace
