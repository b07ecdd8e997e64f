#include "acquire/RegionCompositor.h"

#include "appbase/AppError.h"

#include <QColor>
#include <QImage>

#include <gtest/gtest.h>

namespace {

// A picture whose every pixel says where it is: red = x, green = y (mod 256),
// blue = the display's tag.
QImage patterned(int width, int height, int tag)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x % 256, y % 256, tag));
    return image;
}

QImage solid(int width, int height, QRgb colour)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

ScreenSnapshot snapshot(std::uint32_t id, QImage image, QRectF frame, double scale)
{
    return ScreenSnapshot{id, std::move(image), frame, scale};
}

AppError::Case failureOf(const QRectF &rect, const QList<ScreenSnapshot> &snapshots)
{
    try {
        RegionCompositor::compose(rect, snapshots);
    } catch (const AppError &error) {
        return error.kind();
    }
    ADD_FAILURE() << "compose did not fail";
    return AppError::Case::captureFailed;
}

} // namespace

TEST(RegionCompositor, OneDisplayAtScaleTwoGivesTheExactPixels)
{
    // 200 × 100 points at scale 2.
    const auto shot = snapshot(1, patterned(400, 200, 7), QRectF(0, 0, 200, 100), 2.0);
    // 30 × 20 points whose top edge is 10 points below the display's top.
    const auto result = RegionCompositor::compose(QRectF(15, 70, 30, 20), {shot});
    EXPECT_EQ(result.scale, 2.0);
    ASSERT_EQ(result.image.size(), QSize(60, 40));
    EXPECT_EQ(result.image, shot.image.copy(QRect(30, 20, 60, 40)));
}

TEST(RegionCompositor, FractionalRectangleIsRoundedOutwardsOnTheFastPath)
{
    const auto shot = snapshot(1, patterned(100, 100, 1), QRectF(0, 0, 100, 100), 1.0);
    // x 10.5 to 20.25 and, flipped, y 100 − 40.75 = 59.25 down to 69.5.
    const auto result = RegionCompositor::compose(QRectF(10.5, 30.5, 9.75, 10.25), {shot});
    ASSERT_EQ(result.image.size(), QSize(11, 11));
    EXPECT_EQ(result.image, shot.image.copy(QRect(10, 59, 11, 11)));
}

TEST(RegionCompositor, FractionalRectangleIsRoundedOnTheSlowPath)
{
    const auto left = snapshot(1, solid(100, 100, qRgb(255, 0, 0)), QRectF(0, 0, 100, 100), 1.0);
    const auto right = snapshot(2, solid(100, 100, qRgb(0, 0, 255)), QRectF(100, 0, 100, 100), 1.0);
    const auto result = RegionCompositor::compose(QRectF(90.4, 10, 20.3, 10.4), {left, right});
    EXPECT_EQ(result.image.size(), QSize(20, 10));
}

TEST(RegionCompositor, ScalesOneAndTwoComeOutAtTwoWithTheLowerPartScaledUpSmoothly)
{
    // Left display at scale 1: black on its left half, white on its right.
    QImage lowImage(100, 100, QImage::Format_RGB32);
    lowImage.fill(qRgb(0, 0, 0));
    for (int y = 0; y < 100; ++y)
        for (int x = 50; x < 100; ++x)
            lowImage.setPixel(x, y, qRgb(255, 255, 255));
    const auto low = snapshot(1, lowImage, QRectF(0, 0, 100, 100), 1.0);
    const auto high = snapshot(2, solid(200, 200, qRgb(0, 0, 200)), QRectF(100, 0, 100, 100), 2.0);

    EXPECT_EQ(RegionCompositor::outputScale(QRectF(40, 0, 100, 100), {low, high}), 2.0);
    const auto result = RegionCompositor::compose(QRectF(40, 0, 100, 100), {low, high});
    EXPECT_EQ(result.scale, 2.0);
    ASSERT_EQ(result.image.size(), QSize(200, 200));
    // The scale-1 part covers 60 points = 120 pixels; the black-to-white
    // edge sits at 10 points = pixel 20, and smoothing leaves grey beside it.
    EXPECT_EQ(QColor(result.image.pixel(2, 100)).red(), 0);
    EXPECT_EQ(QColor(result.image.pixel(60, 100)).red(), 255);
    bool sawGrey = false;
    for (int x = 16; x < 24; ++x) {
        const int red = QColor(result.image.pixel(x, 100)).red();
        sawGrey = sawGrey || (red > 20 && red < 235);
    }
    EXPECT_TRUE(sawGrey) << "the scale-1 part was not smoothed";
    // The scale-2 part is its own pixels.
    EXPECT_EQ(result.image.pixel(150, 100), qRgb(0, 0, 200));
    EXPECT_EQ(result.image.pixel(121, 3), qRgb(0, 0, 200));
}

TEST(RegionCompositor, ScalesOneAndOneAndAHalf)
{
    const auto low = snapshot(1, solid(100, 80, qRgb(255, 0, 0)), QRectF(0, 0, 100, 80), 1.0);
    const auto high = snapshot(2, solid(150, 120, qRgb(0, 255, 0)), QRectF(100, 0, 100, 80), 1.5);
    const auto result = RegionCompositor::compose(QRectF(50, 20, 100, 40), {low, high});
    EXPECT_EQ(result.scale, 1.5);
    ASSERT_EQ(result.image.size(), QSize(150, 60));
    EXPECT_EQ(result.image.pixel(10, 30), qRgb(255, 0, 0));
    EXPECT_EQ(result.image.pixel(140, 30), qRgb(0, 255, 0));
    // Nothing transparent: both displays cover the whole rectangle.
    for (int x = 0; x < 150; ++x)
        ASSERT_EQ(qAlpha(result.image.pixel(x, 30)), 255) << x;
}

TEST(RegionCompositor, DisplaysOfDifferentHeightsKeepTheirPlaceInY)
{
    // The right display is lower: its frame starts at y −50 (y up).
    const auto left = snapshot(1, solid(100, 100, qRgb(255, 0, 0)), QRectF(0, 0, 100, 100), 1.0);
    const auto right = snapshot(2, patterned(100, 100, 9), QRectF(100, -50, 100, 100), 1.0);
    const auto result = RegionCompositor::compose(QRectF(50, -50, 100, 150), {left, right});
    ASSERT_EQ(result.image.size(), QSize(100, 150));
    // Top rows right of x 50: above the right display, transparent.
    EXPECT_EQ(qAlpha(result.image.pixel(75, 10)), 0);
    // The right display's top row lands 50 pixels down.
    EXPECT_EQ(result.image.pixel(50, 50), qRgb(0, 0, 9));
    EXPECT_EQ(result.image.pixel(60, 149), qRgb(10, 99, 9));
    // The left display ends 100 pixels down; below it is transparent.
    EXPECT_EQ(result.image.pixel(0, 99), qRgb(255, 0, 0));
    EXPECT_EQ(qAlpha(result.image.pixel(0, 120)), 0);
}

TEST(RegionCompositor, GapBetweenDisplaysStaysTransparent)
{
    const auto left = snapshot(1, solid(100, 100, qRgb(255, 0, 0)), QRectF(0, 0, 100, 100), 1.0);
    const auto right = snapshot(2, solid(100, 100, qRgb(0, 0, 255)), QRectF(150, 0, 100, 100), 1.0);
    const auto result = RegionCompositor::compose(QRectF(50, 0, 150, 100), {left, right});
    ASSERT_EQ(result.image.size(), QSize(150, 100));
    EXPECT_EQ(result.image.pixel(10, 50), qRgb(255, 0, 0));
    for (int x = 50; x < 100; ++x)
        ASSERT_EQ(qAlpha(result.image.pixel(x, 50)), 0) << x;
    EXPECT_EQ(result.image.pixel(140, 50), qRgb(0, 0, 255));
}

TEST(RegionCompositor, PartlyBeyondTheOnlyDisplayTakesTheSlowPath)
{
    const auto shot = snapshot(1, patterned(100, 100, 3), QRectF(0, 0, 100, 100), 1.0);
    const auto result = RegionCompositor::compose(QRectF(80, 80, 40, 40), {shot});
    ASSERT_EQ(result.image.size(), QSize(40, 40));
    EXPECT_EQ(result.image.format(), QImage::Format_ARGB32_Premultiplied);
    // The covered 20 × 20 points are the display's top-right corner.
    EXPECT_EQ(result.image.pixel(0, 20), qRgb(80, 0, 3));
    EXPECT_EQ(result.image.pixel(19, 39), qRgb(99, 19, 3));
    EXPECT_EQ(qAlpha(result.image.pixel(30, 30)), 0);
    EXPECT_EQ(qAlpha(result.image.pixel(5, 5)), 0);
}

TEST(RegionCompositor, OffAllDisplaysIsCroppingFailedAndTheScaleIsTheLargest)
{
    const auto a = snapshot(1, solid(100, 100, 0), QRectF(0, 0, 100, 100), 1.0);
    const auto b = snapshot(2, solid(300, 300, 0), QRectF(100, 0, 100, 100), 3.0);
    EXPECT_EQ(RegionCompositor::outputScale(QRectF(500, 500, 10, 10), {a, b}), 3.0);
    EXPECT_EQ(failureOf(QRectF(500, 500, 10, 10), {a, b}), AppError::Case::croppingFailed);
}

TEST(RegionCompositor, RectangleTouchingOnlyAnEdgeTouchesNothing)
{
    const auto a = snapshot(1, solid(100, 100, 0), QRectF(0, 0, 100, 100), 2.0);
    EXPECT_EQ(failureOf(QRectF(100, 0, 10, 10), {a}), AppError::Case::croppingFailed);
}

TEST(RegionCompositor, NoSnapshotsGiveScaleOneAndCroppingFailed)
{
    EXPECT_EQ(RegionCompositor::outputScale(QRectF(0, 0, 10, 10), {}), 1.0);
    EXPECT_EQ(failureOf(QRectF(0, 0, 10, 10), {}), AppError::Case::croppingFailed);
}

TEST(RegionCompositor, ImageSmallerThanItsFrameIsClamped)
{
    // The frame says 100 × 100 at scale 1, but the picture has 60 × 60 pixels.
    const auto shot = snapshot(1, patterned(60, 60, 4), QRectF(0, 0, 100, 100), 1.0);
    const auto clamped = RegionCompositor::compose(QRectF(50, 30, 20, 20), {shot});
    // Rows 50..70 and columns 50..70 exist only up to 60.
    EXPECT_EQ(clamped.image.size(), QSize(10, 10));
    EXPECT_EQ(clamped.image, shot.image.copy(QRect(50, 50, 10, 10)));
    // Wholly beyond the picture: nothing to crop on the fast path.
    EXPECT_EQ(failureOf(QRectF(80, 0, 10, 10), {shot}), AppError::Case::croppingFailed);
}

TEST(RegionCompositor, TooSmallCanvasIsCroppingFailed)
{
    const auto left = snapshot(1, solid(100, 100, 0), QRectF(0, 0, 100, 100), 1.0);
    const auto right = snapshot(2, solid(100, 100, 0), QRectF(100, 0, 100, 100), 1.0);
    EXPECT_EQ(failureOf(QRectF(99.9, 10, 0.2, 0.2), {left, right}), AppError::Case::croppingFailed);
}

TEST(RegionCompositor, LaterSnapshotsDrawOverEarlierOnes)
{
    const auto first = snapshot(1, solid(100, 100, qRgb(255, 0, 0)), QRectF(0, 0, 100, 100), 1.0);
    const auto second = snapshot(2, solid(100, 100, qRgb(0, 255, 0)), QRectF(50, 0, 100, 100), 1.0);
    const auto result = RegionCompositor::compose(QRectF(0, 0, 150, 100), {first, second});
    EXPECT_EQ(result.image.pixel(75, 50), qRgb(0, 255, 0));
    EXPECT_EQ(result.image.pixel(25, 50), qRgb(255, 0, 0));
}

TEST(RegionCompositor, DisplaysOfOneScaleJoinWithoutResampling)
{
    const auto left = snapshot(1, patterned(100, 80, 1), QRectF(0, 0, 100, 80), 1.0);
    const auto right = snapshot(2, patterned(100, 80, 2), QRectF(100, 0, 100, 80), 1.0);
    const auto result = RegionCompositor::compose(QRectF(60, 10, 80, 50), {left, right});
    ASSERT_EQ(result.image.size(), QSize(80, 50));
    const QImage joined = result.image.convertToFormat(QImage::Format_RGB32);
    // Top edge 60 points up from y 0 is pixel row 20 of both displays.
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 80; ++x) {
            const QRgb expected = x < 40 ? left.image.pixel(60 + x, 20 + y) : right.image.pixel(x - 40, 20 + y);
            ASSERT_EQ(joined.pixel(x, y), expected) << x << "," << y;
        }
}
