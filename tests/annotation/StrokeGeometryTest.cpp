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

TEST(StrokeGeometry, PiecesFollowThePolylineWithoutGaps)
{
    const QList<QPointF> trace{{0, 0}, {100, 0}, {100, 30}, {95, 30}, {95, 31}};
    const auto cut = StrokeGeometry::pieces(trace, 40, 16);
    ASSERT_FALSE(cut.isEmpty());
    EXPECT_EQ(cut.first().first(), trace.first());
    EXPECT_EQ(cut.last().last(), trace.last());
    double total = 0;
    for (qsizetype i = 0; i < cut.size(); ++i) {
        double length = 0;
        for (qsizetype j = 1; j < cut[i].size(); ++j)
            length += StrokeGeometry::length(cut[i][j] - cut[i][j - 1]);
        EXPECT_LE(length, 40 + 1e-9);
        total += length;
        if (i > 0) {
            EXPECT_EQ(cut[i].first(), cut[i - 1].last());
        }
    }
    EXPECT_NEAR(total, 100 + 30 + 5 + 1, 1e-9);
    // Every corner of the trace is a point of some piece.
    for (QPointF corner : trace) {
        bool found = false;
        for (const auto &piece : cut)
            found = found || piece.contains(corner);
        EXPECT_TRUE(found);
    }
}

TEST(StrokeGeometry, PiecesHoldAtMostTheGivenSegments)
{
    QList<QPointF> trace;
    for (int i = 0; i < 50; ++i)
        trace.append(QPointF(i, i % 2));
    const auto cut = StrokeGeometry::pieces(trace, 1000, 16);
    EXPECT_EQ(cut.size(), 4);
    for (const auto &piece : cut)
        EXPECT_LE(piece.size(), 17);
}

TEST(StrokeGeometry, ALonePointGivesNoPiece)
{
    EXPECT_TRUE(StrokeGeometry::pieces({QPointF(3, 3)}, 10, 16).isEmpty());
    EXPECT_TRUE(StrokeGeometry::pieces({}, 10, 16).isEmpty());
}

TEST(StrokeGeometry, CoarserToleranceGivesFewerChordsStillWithinIt)
{
    const QPointF from(0, 0), to(300, 0), bend(150, 200);
    const QList<QPointF> fine = StrokeGeometry::segmentPolyline(from, to, bend);
    const QList<QPointF> coarse = StrokeGeometry::segmentPolyline(from, to, bend, 0.1);
    EXPECT_LT(coarse.size(), fine.size());
    const QPointF c = StrokeGeometry::controlPoint(from, to, bend);
    for (int i = 0; i <= 1000; ++i) {
        const double t = i / 1000.0, u = 1 - t;
        EXPECT_LT(StrokeGeometry::distanceToPolyline(u * u * from + 2 * u * t * c + t * t * to, coarse), 0.1);
    }
}
