#include "annotation/DrawingRules.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace glimpso;

namespace {

const QColor red(255, 59, 48);

void expectPoint(QPointF actual, QPointF expected)
{
    EXPECT_NEAR(actual.x(), expected.x(), 1e-9);
    EXPECT_NEAR(actual.y(), expected.y(), 1e-9);
}

} // namespace

TEST(DrawingRules, ShiftOrAltHoldTheConstraint)
{
    EXPECT_TRUE(DrawingRules::constraintHeld(Qt::ShiftModifier));
    EXPECT_TRUE(DrawingRules::constraintHeld(Qt::AltModifier));
    EXPECT_TRUE(DrawingRules::constraintHeld(Qt::AltModifier | Qt::ControlModifier));
    EXPECT_FALSE(DrawingRules::constraintHeld(Qt::ControlModifier));
    EXPECT_FALSE(DrawingRules::constraintHeld(Qt::MetaModifier));
    EXPECT_FALSE(DrawingRules::constraintHeld({}));
}

TEST(DrawingRules, SnappingKeepsTheDistanceOnTheNearestEighth)
{
    const QPointF anchor(10, 20);
    expectPoint(DrawingRules::snappedToEighths(anchor, {20, 21}), {10 + std::hypot(10.0, 1.0), 20});
    expectPoint(DrawingRules::snappedToEighths(anchor, {10, 5}), {10, 5});
    const double r = std::hypot(12.0, 10.0);
    expectPoint(DrawingRules::snappedToEighths(anchor, {-2, 30}),
                {10 - r / std::numbers::sqrt2, 20 + r / std::numbers::sqrt2});
}

TEST(DrawingRules, AHalfwayAngleRoundsAwayFromZero)
{
    // 22.5 degrees exactly is halfway between 0 and 45: it goes to 45.
    const double t = std::numbers::pi / 8;
    const QPointF p(std::cos(t) * 10, std::sin(t) * 10);
    const QPointF snapped = DrawingRules::snappedToEighths({0, 0}, p);
    EXPECT_NEAR(std::atan2(snapped.y(), snapped.x()), std::numbers::pi / 4, 1e-9);
    // And -22.5 to -45.
    const QPointF q = DrawingRules::snappedToEighths({0, 0}, {p.x(), -p.y()});
    EXPECT_NEAR(std::atan2(q.y(), q.x()), -std::numbers::pi / 4, 1e-9);
}

TEST(DrawingRules, APointerOnTheAnchorStaysPut)
{
    expectPoint(DrawingRules::snappedToEighths({5, 5}, {5, 5}), {5, 5});
}

TEST(DrawingRules, SquareFramesGrowFromTheAnchorTowardsThePointer)
{
    EXPECT_EQ(DrawingRules::dragFrame({10, 10}, {40, 20}, false), QRectF(10, 10, 30, 10));
    EXPECT_EQ(DrawingRules::dragFrame({10, 10}, {40, 20}, true), QRectF(10, 10, 30, 30));
    EXPECT_EQ(DrawingRules::dragFrame({10, 10}, {0, 50}, true), QRectF(-30, 10, 40, 40));
    EXPECT_EQ(DrawingRules::dragFrame({10, 10}, {5, 0}, true), QRectF(0, 0, 10, 10));
}

TEST(DrawingRules, MeaningfulMarks)
{
    EXPECT_FALSE(DrawingRules::isMeaningful(Annotation::pencil({{1, 1}}, red, 3)));
    EXPECT_TRUE(DrawingRules::isMeaningful(Annotation::highlight({{1, 1}, {1, 2}}, red, 18)));
    EXPECT_FALSE(DrawingRules::isMeaningful(Annotation::line({0, 0}, {3.99, 0}, red, 3)));
    EXPECT_TRUE(DrawingRules::isMeaningful(Annotation::arrow({0, 0}, {0, 4}, red, 3)));
    EXPECT_FALSE(DrawingRules::isMeaningful(Annotation::rect({0, 0, 4, 3.9}, red, 3)));
    EXPECT_TRUE(DrawingRules::isMeaningful(Annotation::ellipse({0, 0, 4, 4}, red, 3)));
    EXPECT_FALSE(DrawingRules::isMeaningful(Annotation::mosaic({0, 0, 2, 40}, 16)));
    EXPECT_FALSE(DrawingRules::isMeaningful(Annotation::text({}, {0, 0}, {}, red)));
    EXPECT_TRUE(DrawingRules::isMeaningful(Annotation::text(QStringLiteral("a"), {0, 0}, {}, red)));
    EXPECT_TRUE(DrawingRules::isMeaningful(Annotation::sequence(1, {0, 0}, red, 14)));
}

TEST(DrawingRules, ResizedBoundsMoveTheHandlesEdgesAndNeverMirror)
{
    const QRectF start(100, 100, 40, 20); // minX 100, maxX 140, minY 100, maxY 120
    EXPECT_EQ(DrawingRules::resizedBounds(Handle::topLeft, start, {5, 7}), QRectF(105, 100, 35, 27));
    EXPECT_EQ(DrawingRules::resizedBounds(Handle::bottom, start, {50, -5}), QRectF(100, 95, 40, 25));
    EXPECT_EQ(DrawingRules::resizedBounds(Handle::right, start, {-60, 0}), QRectF(100, 100, 20, 20));
    EXPECT_EQ(DrawingRules::resizedBounds(Handle::left, start, {37, 0}), QRectF(137, 100, 8, 20));
}

TEST(DrawingRules, ImageSpaceFlipsYFromTheRectanglesTop)
{
    const QRectF r(100, 200, 300, 100); // maxY 300
    EXPECT_EQ(DrawingRules::toImageSpace(Annotation::rect({110, 250, 20, 30}, red, 3), r),
              Annotation::rect({10, 20, 20, 30}, red, 3));
    EXPECT_EQ(DrawingRules::toImageSpace(Annotation::pencil({{100, 300}, {400, 200}}, red, 2), r),
              Annotation::pencil({{0, 0}, {300, 100}}, red, 2));
    EXPECT_EQ(DrawingRules::toImageSpace(Annotation::mosaic({100, 280, 50, 20}, 16), r),
              Annotation::mosaic({0, 0, 50, 20}, 16));
}
