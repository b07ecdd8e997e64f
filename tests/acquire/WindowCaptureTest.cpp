#include "acquire/AlphaBlur.h"
#include "acquire/WindowCapture.h"
#include "appbase/AppError.h"

#include <gtest/gtest.h>

#include <QPainter>

namespace {

QImage opaqueWindow(QSize size, QRgb colour = qRgb(40, 120, 200))
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

// An ARGB window with rounded corners: transparent outside them.
QImage roundedWindow(QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(250, 250, 250));
    painter.drawRoundedRect(QRectF(QPointF(0, 0), QSizeF(size)), 12, 12);
    return image;
}

int alphaAt(const QImage &image, int x, int y)
{
    return qAlpha(image.pixel(x, y));
}

class FakeGrabber : public WindowGrabbing
{
public:
    Shot grab(std::uint32_t windowID, bool justUncovered) override
    {
        asked = windowID;
        uncovered = justUncovered;
        if (windowID == 0xdead)
            throw AppError::captureFailed(WindowCapture::closedText());
        return {opaqueWindow({64, 48}), 2.0};
    }
    std::uint32_t asked = 0;
    bool uncovered = false;
};

} // namespace

TEST(WindowCapture, NoPaddingBackgroundOrShadowGivesTheShotItselfWithItsAlpha)
{
    const QImage window = roundedWindow({120, 80});
    const QImage framed = WindowCapture::frame(window, 1.0, {std::nullopt, 0.0, false});
    EXPECT_EQ(framed, window);
    EXPECT_EQ(alphaAt(framed, 0, 0), 0);
}

TEST(WindowCapture, PaddingIsRoundedPointsTimesTheScaleOnEverySide)
{
    const QImage window = opaqueWindow({100, 60});
    WindowCapture::Options options{QColor(Qt::white), 48.0, false};
    const QImage one = WindowCapture::frame(window, 1.0, options);
    EXPECT_EQ(one.size(), QSize(100 + 96, 60 + 96));
    const QImage two = WindowCapture::frame(window, 2.0, options);
    EXPECT_EQ(two.size(), QSize(100 + 192, 60 + 192));
    options.padding = 10.3;
    EXPECT_EQ(WindowCapture::frame(window, 1.5, options).size(), QSize(100 + 30, 60 + 30));
    // The window lies at (pad, pad), the background all round it.
    EXPECT_EQ(one.pixel(48, 48), window.pixel(0, 0));
    EXPECT_EQ(one.pixel(147, 107), window.pixel(99, 59));
    EXPECT_EQ(one.pixel(47, 48), qRgb(255, 255, 255));
    EXPECT_EQ(one.pixel(0, 0), qRgb(255, 255, 255));
}

TEST(WindowCapture, ZeroPaddingWithShadowGivesACanvasOfTheImagesSizeWithTheShadowUnderTheWindow)
{
    const QImage window = roundedWindow({120, 80});
    const QImage framed = WindowCapture::frame(window, 1.0, {std::nullopt, 0.0, true});
    EXPECT_EQ(framed.size(), window.size());
    // The corner outside the rounding now holds shadow, not nothing.
    EXPECT_GT(alphaAt(framed, 1, 79), 0);
    EXPECT_EQ(qGray(framed.pixel(60, 40)), qGray(window.pixel(60, 40)));
}

TEST(WindowCapture, ATransparentBackgroundWithShadowKeepsAlphaAroundTheShadow)
{
    const QImage window = opaqueWindow({200, 120});
    const QImage framed = WindowCapture::frame(window, 1.0, {std::nullopt, 100.0, true});
    // Far from the window: nothing.
    EXPECT_EQ(alphaAt(framed, 0, 0), 0);
    // Under the window, cast downwards: dark and partly transparent.
    const int below = alphaAt(framed, 200, 100 + 120 + 22);
    EXPECT_GT(below, 40);
    EXPECT_LT(below, 255);
    // Above the window there is less of it than below.
    EXPECT_LT(alphaAt(framed, 200, 100 - 22), below);
    // The shadow is black: colour channels stay 0 where it is alone.
    EXPECT_EQ(qRed(framed.pixel(200, 100 + 120 + 22)), 0);
}

TEST(WindowCapture, TheShadowScalesWithTheDisplay)
{
    const QImage small = WindowCapture::frame(opaqueWindow({100, 60}), 1.0, {QColor(Qt::white), 48.0, true});
    const QImage large = WindowCapture::frame(opaqueWindow({200, 120}), 2.0, {QColor(Qt::white), 48.0, true});
    ASSERT_EQ(large.size(), small.size() * 2);
    // The same point of the picture in points is about as dark at both scales.
    for (const QPoint p : {QPoint(98, 48 + 60 + 20), QPoint(40, 80), QPoint(98, 150)})
        EXPECT_NEAR(qGray(large.pixel(p * 2)), qGray(small.pixel(p)), 6) << p.x() << "," << p.y();
}

TEST(WindowCapture, AColouredBackgroundIsOpaqueEverywhere)
{
    const QImage framed =
        WindowCapture::frame(roundedWindow({120, 80}), 1.0, {QColor(QStringLiteral("#FFD700")), 30.0, true});
    for (const QPoint p : {QPoint(0, 0), QPoint(30, 30), QPoint(179, 139)})
        EXPECT_EQ(alphaAt(framed, p.x(), p.y()), 255);
    const QImage flat =
        WindowCapture::frame(roundedWindow({120, 80}), 1.0, {QColor(QStringLiteral("#FFD700")), 30.0, false});
    EXPECT_EQ(flat.pixel(0, 0), QColor(QStringLiteral("#FFD700")).rgb());
    // In the rounded corner of the window, the background shows through.
    EXPECT_EQ(flat.pixel(30, 30), QColor(QStringLiteral("#FFD700")).rgb());
}

TEST(WindowCapture, CaptureGrabsOffTheCallingThreadAndFramesAtTheShotsScale)
{
    FakeGrabber grabber;
    QFuture<RegionCompositor::Composed> future =
        WindowCapture::capture(grabber, 0x1e00007, {QColor(Qt::white), 10.0, false}, true);
    const RegionCompositor::Composed composed = future.result();
    EXPECT_EQ(grabber.asked, 0x1e00007u);
    EXPECT_TRUE(grabber.uncovered);
    EXPECT_EQ(composed.scale, 2.0);
    EXPECT_EQ(composed.image.size(), QSize(64 + 40, 48 + 40));
}

TEST(WindowCapture, AClosedWindowFailsWithItsOwnText)
{
    FakeGrabber grabber;
    QFuture<RegionCompositor::Composed> future = WindowCapture::capture(grabber, 0xdead, {});
    try {
        future.waitForFinished();
        FAIL() << "no failure";
    } catch (const AppError &error) {
        EXPECT_EQ(error.errorDescription(), "Capture failed: That window closed before it could be captured.");
    }
}

TEST(AlphaBlur, KeepsTheCoverageOfAShapeWellInside)
{
    const QImage square = opaqueWindow({100, 100});
    const AlphaBlur::Mask mask = AlphaBlur::shadowOf(square, {100, 100}, {300, 300}, 8.0);
    EXPECT_NEAR(mask.at(150, 150), 1.0f, 0.01f);
    EXPECT_NEAR(mask.at(100, 150), 0.5f, 0.06f);
    EXPECT_NEAR(mask.at(5, 5), 0.0f, 0.001f);
}

TEST(AlphaBlur, LargeBlursAreAsSmoothAsSmallOnes)
{
    const AlphaBlur::Mask mask = AlphaBlur::shadowOf(opaqueWindow({200, 200}), {150, 150}, {500, 500}, 28.0);
    // From the edge outwards, coverage only falls.
    for (int x = 150; x > 40; --x)
        EXPECT_LE(mask.at(x - 1, 250), mask.at(x, 250) + 1e-4f) << x;
    // Half-way down at the edge, as a Gaussian is.
    EXPECT_NEAR(mask.at(150, 250), 0.5f, 0.06f);
    EXPECT_NEAR(mask.at(250, 250), 1.0f, 0.05f);
}

TEST(AlphaBlur, AMoveOutsideTheMaskLeavesNothing)
{
    const AlphaBlur::Mask mask = AlphaBlur::shadowOf(opaqueWindow({10, 10}), {500, 500}, {50, 50}, 2.0);
    for (const float v : mask.values)
        ASSERT_EQ(v, 0.0f);
}

TEST(WindowCapture, AnOpaqueWindowsShadowIsTheSameWhicheverWayItIsWorkedOut)
{
    // Without alpha the shadow is worked out from the rectangle; with alpha
    // (here all opaque) from the picture's own coverage.
    const QImage opaque = opaqueWindow({160, 100});
    const QImage withAlpha = opaque.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (const double scale : {1.0, 2.0}) {
        const WindowCapture::Options options{QColor(Qt::white), 40.0, true};
        const QImage fast = WindowCapture::frame(opaque, scale, options);
        const QImage full = WindowCapture::frame(withAlpha, scale, options);
        ASSERT_EQ(fast.size(), full.size());
        int worst = 0;
        for (int y = 0; y < fast.height(); ++y)
            for (int x = 0; x < fast.width(); ++x)
                worst = std::max(worst, std::abs(qGray(fast.pixel(x, y)) - qGray(full.pixel(x, y))));
        EXPECT_LE(worst, 4) << "scale " << scale;
    }
}
