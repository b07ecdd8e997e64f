#include "gifencoding/Image.h"

#include "TestImages.h"

#include <gtest/gtest.h>

using namespace gifencoding;

TEST(Image, IntegralRoundsOutwardToWholePixels)
{
    EXPECT_EQ(integral({10.5, 20.2, 50.0, 3.3}), (PixelRect{10, 20, 51, 4}));
    EXPECT_EQ(integral({-0.5, 1.0, 2.0, 2.0}), (PixelRect{-1, 1, 3, 2}));
    EXPECT_EQ(integral({3, 4, 5, 6}), (PixelRect{3, 4, 5, 6}));
}

TEST(Image, IntegralOfANegativeSizeCoversTheSameArea)
{
    EXPECT_EQ(integral({10, 10, -4.5, -2}), (PixelRect{5, 8, 5, 2}));
}

TEST(Image, IntersectionIsEmptyWhenRectanglesDoNotMeet)
{
    EXPECT_TRUE(intersection({0, 0, 10, 10}, {10, 0, 5, 5}).isEmpty());
    EXPECT_EQ(intersection({0, 0, 10, 10}, {5, 5, 10, 10}), (PixelRect{5, 5, 5, 5}));
}

TEST(Image, CropSharesThePixelsOfTheRightPlace)
{
    const Image image = TestImages::gradient(20, 10, 1);
    const auto part = image.cropped({4, 3, 5, 2});
    ASSERT_TRUE(part);
    EXPECT_EQ(part->width(), 5);
    EXPECT_EQ(part->height(), 2);
    EXPECT_EQ(part->line(1), image.line(4) + 16);
}

TEST(Image, CropIsClippedToTheImageAndAbsentOutsideIt)
{
    const Image image = TestImages::solid(20, 10, 1, 2, 3);
    EXPECT_EQ(image.cropped({15, 5, 10, 10})->width(), 5);
    EXPECT_FALSE(image.cropped({20, 0, 4, 4}));
    EXPECT_FALSE(image.cropped({2, 2, 0, 3}));
}

TEST(Image, CropKeepsThePixelsAliveAfterTheImageIsGone)
{
    std::optional<Image> part;
    {
        const Image image = TestImages::solid(8, 8, 9, 8, 7);
        part = image.cropped({1, 1, 2, 2});
    }
    ASSERT_TRUE(part);
    EXPECT_EQ(part->line(1)[2], 9);
}
