#include "annotation/PixelBlocks.h"

#include <gtest/gtest.h>

using namespace glimpso;

namespace {

QImage gradient(QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb((x * 13) % 256, (y * 7) % 256, (x + y) % 256));
    }
    return image;
}

} // namespace

TEST(PixelBlocks, CountsPartialBlocksAtTheEdges)
{
    // 20 wide, centre 10, blocks of 8: [0, 2) [2, 10) [10, 18) [18, 20).
    // 8 high, centre 4: [0, 4) [4, 8).
    EXPECT_EQ(PixelBlocks(gradient({20, 8}), 8).blockCount(), 4 * 2);
}

TEST(PixelBlocks, MirroredPatchIsThePixellatedPictureUpsideDown)
{
    const QImage image = gradient({50, 40});
    PixelBlocks blocks(image, 6);
    const QImage whole = blocks.pixellated();
    const QRect area(7, 3, 20, 15);
    const QImage patch = blocks.mirroredPatch(area);
    ASSERT_EQ(patch.size(), area.size());
    for (int y = 0; y < area.height(); ++y) {
        for (int x = 0; x < area.width(); ++x)
            ASSERT_EQ(patch.pixel(x, y), whole.pixel(area.left() + x, 39 - (area.top() + y))) << x << "," << y;
    }
}

TEST(PixelBlocks, PatchIsCutToTheImage)
{
    PixelBlocks blocks(gradient({30, 30}), 4);
    EXPECT_EQ(blocks.mirroredPatch(QRect(20, -5, 40, 10)).size(), QSize(10, 5));
    EXPECT_TRUE(blocks.mirroredPatch(QRect(40, 40, 5, 5)).isNull());
}

TEST(PixelBlocks, AveragesKeepTranslucency)
{
    QImage image(4, 4, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setPixel(0, 0, qRgba(255, 255, 255, 255));
    PixelBlocks blocks(image, 4);
    const QImage result = blocks.pixellated();
    // Centre (2, 2): blocks [0, 2) and [2, 4) each way. One opaque white
    // pixel in the four of its block: premultiplied average 64 of 255.
    EXPECT_EQ(result.pixel(1, 1), qRgba(64, 64, 64, 64));
    EXPECT_EQ(qAlpha(result.pixel(3, 3)), 0);
}

TEST(PixelBlocks, BlocksSmallerThanAPixelLeaveThePictureAsItIs)
{
    const QImage image = gradient({9, 7});
    EXPECT_EQ(PixelBlocks(image, 0.4).pixellated(), image);
}

TEST(PixelBlocks, IsInvalidWithoutAPictureOrABlock)
{
    EXPECT_FALSE(PixelBlocks(QImage(), 8).isValid());
    EXPECT_FALSE(PixelBlocks(gradient({4, 4}), 0).isValid());
    EXPECT_TRUE(PixelBlocks(QImage(), 8).pixellated().isNull());
}
