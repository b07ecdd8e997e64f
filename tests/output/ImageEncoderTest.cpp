#include "output/ImageEncoder.h"

#include "appbase/AppError.h"

#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>

#include <gtest/gtest.h>

namespace {
QImage sample()
{
    QImage image(64, 48, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 4, y * 5, (x ^ y) & 0xff));
    return image;
}
} // namespace

TEST(ImageEncoder, ExtensionsFollowTheFormat)
{
    EXPECT_EQ(ImageEncoder::fileExtension(SaveFormat::png), "png");
    EXPECT_EQ(ImageEncoder::fileExtension(SaveFormat::jpeg), "jpeg");
    EXPECT_EQ(ImageEncoder::fileExtension(SaveFormat::heic), "heic");
}

TEST(ImageEncoder, PngIsLossless)
{
    const QImage image = sample();
    QImage back = QImage::fromData(ImageEncoder::encode(image, SaveFormat::png), "png");
    EXPECT_EQ(back.convertToFormat(QImage::Format_RGB32), image);
}

TEST(ImageEncoder, JpegIsQualityNinetyTwo)
{
    const QImage image = sample();
    QByteArray expected;
    QBuffer buffer(&expected);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(92);
    ASSERT_TRUE(writer.write(image));
    EXPECT_EQ(ImageEncoder::encode(image, SaveFormat::jpeg), expected);
}

TEST(ImageEncoder, JpegOfATransparentCanvasIsWhiteWhereNothingIs)
{
    QImage canvas(16, 16, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    const QImage back = QImage::fromData(ImageEncoder::encode(canvas, SaveFormat::jpeg), "jpeg");
    ASSERT_FALSE(back.isNull());
    EXPECT_GT(qRed(back.pixel(8, 8)), 245);
}

TEST(ImageEncoder, HeicIsAnHeifFileOfTheHevcBrand)
{
    const QByteArray bytes = ImageEncoder::encode(sample(), SaveFormat::heic);
    ASSERT_GT(bytes.size(), 12);
    EXPECT_EQ(bytes.mid(4, 8), QByteArray("ftypheic"));
}

TEST(ImageEncoder, AnEmptyPictureIsFileIOFailed)
{
    try {
        ImageEncoder::encode(QImage(), SaveFormat::png);
        FAIL();
    } catch (const AppError &error) {
        EXPECT_EQ(error.kind(), AppError::Case::fileIOFailed);
    }
}
