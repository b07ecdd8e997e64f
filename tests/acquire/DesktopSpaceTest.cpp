#include "acquire/DesktopSpace.h"

#include <gtest/gtest.h>

TEST(DesktopSpace, PrimaryScreenFlipsAroundItsBottomEdge)
{
    const DesktopSpace space(QRect(0, 0, 1920, 1080));
    EXPECT_EQ(space.toGlobal(QRectF(0, 0, 1920, 1080)), QRectF(0, 0, 1920, 1080));
    EXPECT_EQ(space.toGlobal(QRectF(10, 20, 100, 50)), QRectF(10, 1010, 100, 50));
    EXPECT_EQ(space.toGlobal(QPointF(0, 0)), QPointF(0, 1080));
    EXPECT_EQ(space.toGlobal(QPointF(5, 1080)), QPointF(5, 0));
}

TEST(DesktopSpace, SecondScreenBelowHasNegativeY)
{
    const DesktopSpace space(QRect(0, 0, 1920, 1080));
    // A screen under the primary one in Qt's space lies below y 0 when y is up.
    EXPECT_EQ(space.toGlobal(QRectF(0, 1080, 1280, 720)), QRectF(0, -720, 1280, 720));
    // One to the right, top aligned, 1440 high, reaches above the primary.
    EXPECT_EQ(space.toGlobal(QRectF(1920, 0, 2560, 1440)), QRectF(1920, -360, 2560, 1440));
}

TEST(DesktopSpace, PrimaryAwayFromTheOriginIsTheOrigin)
{
    const DesktopSpace space(QRect(1280, 200, 1920, 1080));
    EXPECT_EQ(space.toGlobal(QRectF(1280, 200, 1920, 1080)), QRectF(0, 0, 1920, 1080));
    EXPECT_EQ(space.toGlobal(QRectF(0, 0, 1280, 1024)), QRectF(-1280, 256, 1280, 1024));
}

TEST(DesktopSpace, RoundTripsAndNormalises)
{
    const DesktopSpace space(QRect(100, 50, 800, 600));
    const QRectF qt(123.5, 77.25, 40.5, 30);
    EXPECT_EQ(space.toQt(space.toGlobal(qt)), qt);
    const QPointF p(-3, 900.5);
    EXPECT_EQ(space.toQt(space.toGlobal(p)), p);
    EXPECT_EQ(space.toGlobal(QRectF(50, 60, -10, -20)), space.toGlobal(QRectF(40, 40, 10, 20)));
}

TEST(DesktopSpace, NativePixelsKeepTheOriginAndScaleTheSize)
{
    EXPECT_EQ(DesktopSpace::nativePixelRect(QRect(1920, 0, 1280, 720), 1.5), QRect(1920, 0, 1920, 1080));
    EXPECT_EQ(DesktopSpace::nativePixelRect(QRect(0, 0, 1920, 1080), 1.0), QRect(0, 0, 1920, 1080));
}

TEST(DesktopSpace, DisplayIdsAreStableAndDistinct)
{
    EXPECT_EQ(DesktopSpace::displayID("DP-1", 0), DesktopSpace::displayID("DP-1", 3));
    EXPECT_NE(DesktopSpace::displayID("DP-1", 0), DesktopSpace::displayID("DP-2", 0));
    EXPECT_EQ(DesktopSpace::displayID("", 2), 2u);
}
