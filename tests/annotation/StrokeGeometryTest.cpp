#include "annotation/StrokeGeometry.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace glimpso;

TEST(StrokeGeometry, ControlPointMakesTheCurvePassThroughTheBendAtItsMiddle)
{
    const QPointF from(0, 0), to(100, 20), bend(40, 60);
    const QPointF c = StrokeGeometry::controlPoint(from, to, bend);
    const QPointF middle = 0.25 * from + 0.5 * c + 0.25 * to;
    EXPECT_NEAR(middle.x(), bend.x(), 1e-9);
    EXPECT_NEAR(middle.y(), bend.y(), 1e-9);
}

TEST(StrokeGeometry, CurvePolylineStaysWithinTwoHundredthsOfAPoint)
{
    const QPointF from(0, 0), to(300, 0), bend(150, 200);
    const QList<QPointF> points = StrokeGeometry::segmentPolyline(from, to, bend);
    const QPointF c = StrokeGeometry::controlPoint(from, to, bend);
    for (int i = 0; i <= 1000; ++i) {
        const double t = i / 1000.0, u = 1 - t;
        const QPointF onCurve = u * u * from + 2 * u * t * c + t * t * to;
        EXPECT_LT(StrokeGeometry::distanceToPolyline(onCurve, points), 0.005);
    }
}

TEST(StrokeGeometry, DistanceToSegmentUsesTheNearestEnd)
{
    EXPECT_DOUBLE_EQ(StrokeGeometry::distanceToSegment({-3, 4}, {0, 0}, {10, 0}), 5.0);
    EXPECT_DOUBLE_EQ(StrokeGeometry::distanceToSegment({5, 4}, {0, 0}, {10, 0}), 4.0);
    EXPECT_DOUBLE_EQ(StrokeGeometry::distanceToSegment({3, 4}, {0, 0}, {0, 0}), 5.0);
}

TEST(StrokeGeometry, ALonePointHasNoStrokeToHit)
{
    EXPECT_TRUE(std::isinf(StrokeGeometry::distanceToPolyline({0, 0}, {QPointF(0, 0)})));
}
