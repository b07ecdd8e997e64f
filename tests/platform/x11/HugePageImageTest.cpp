#include "platform/x11/HugePageImage.h"

#include <gtest/gtest.h>

#include <cstdint>

TEST(HugePageImage, APictureOfAScreenStartsOnAHugePageEdgeWithRowsPacked)
{
    QImage image = HugePageImage::allocate(QSize(3840, 2160), QImage::Format_RGB32);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(3840, 2160));
    EXPECT_EQ(image.format(), QImage::Format_RGB32);
    EXPECT_EQ(image.bytesPerLine(), 3840 * 4);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image.constBits()) % (std::uintptr_t(2) << 20), 0u);
}

TEST(HugePageImage, EveryPixelCanBeWrittenAndACopyKeepsItsOwn)
{
    QImage image = HugePageImage::allocate(QSize(1000, 700), QImage::Format_RGB32);
    ASSERT_FALSE(image.isNull());
    image.fill(qRgb(10, 20, 30));
    image.setPixel(999, 699, qRgb(1, 2, 3));
    const QImage copy = image;
    image.setPixel(0, 0, qRgb(200, 100, 50));
    EXPECT_EQ(copy.pixel(0, 0), qRgb(10, 20, 30));
    EXPECT_EQ(copy.pixel(999, 699), qRgb(1, 2, 3));
    EXPECT_EQ(image.pixel(0, 0), qRgb(200, 100, 50));
}

TEST(HugePageImage, AFormatOfOtherThanFourBytesAPixelIsAnOrdinaryImage)
{
    const QImage image = HugePageImage::allocate(QSize(33, 7), QImage::Format_RGB888);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(33, 7));
    EXPECT_EQ(image.format(), QImage::Format_RGB888);
}

TEST(HugePageImage, APictureSmallerThanAHugePageIsAnOrdinaryWritableImage)
{
    QImage image = HugePageImage::allocate(QSize(300, 200), QImage::Format_RGB32);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(300, 200));
    EXPECT_EQ(image.bytesPerLine(), 300 * 4);
    image.fill(qRgb(4, 5, 6));
    EXPECT_EQ(image.pixel(299, 199), qRgb(4, 5, 6));
}

TEST(HugePageImage, AnEmptySizeIsANullImage)
{
    EXPECT_TRUE(HugePageImage::allocate(QSize(0, 10), QImage::Format_RGB32).isNull());
}
