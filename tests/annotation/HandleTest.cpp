#include "annotation/Handle.h"

#include <gtest/gtest.h>

using namespace glimpso;

namespace {
// 100 wide, 50 high, lower left corner at (10, 20) in y-up points.
const QRectF rect(10, 20, 100, 50);
} // namespace

TEST(Handle, AnchorsFollowTheYUpCorners)
{
    EXPECT_EQ(anchor(Handle::topLeft, rect), QPointF(10, 70));
    EXPECT_EQ(anchor(Handle::top, rect), QPointF(60, 70));
    EXPECT_EQ(anchor(Handle::topRight, rect), QPointF(110, 70));
    EXPECT_EQ(anchor(Handle::right, rect), QPointF(110, 45));
    EXPECT_EQ(anchor(Handle::bottomRight, rect), QPointF(110, 20));
    EXPECT_EQ(anchor(Handle::bottom, rect), QPointF(60, 20));
    EXPECT_EQ(anchor(Handle::bottomLeft, rect), QPointF(10, 20));
    EXPECT_EQ(anchor(Handle::left, rect), QPointF(10, 45));
}

TEST(Handle, OrderIsTheScanOrder)
{
    for (size_t i = 0; i < allHandles.size(); ++i)
        EXPECT_EQ(int(allHandles[i]), int(i));
}

TEST(Handle, HitBoxIsCentredOnTheAnchor)
{
    const QRectF box = hitBox(Handle::topRight, rect, 26);
    EXPECT_EQ(box, QRectF(97, 57, 26, 26));
    EXPECT_TRUE(box.contains(QPointF(123, 83)));
    EXPECT_FALSE(box.contains(QPointF(123.5, 83)));
}

TEST(Handle, CursorsPairOppositeCorners)
{
    EXPECT_EQ(cursor(Handle::topLeft), Qt::SizeFDiagCursor);
    EXPECT_EQ(cursor(Handle::bottomRight), Qt::SizeFDiagCursor);
    EXPECT_EQ(cursor(Handle::topRight), Qt::SizeBDiagCursor);
    EXPECT_EQ(cursor(Handle::bottomLeft), Qt::SizeBDiagCursor);
    EXPECT_EQ(cursor(Handle::top), Qt::SizeVerCursor);
    EXPECT_EQ(cursor(Handle::bottom), Qt::SizeVerCursor);
    EXPECT_EQ(cursor(Handle::left), Qt::SizeHorCursor);
    EXPECT_EQ(cursor(Handle::right), Qt::SizeHorCursor);
}

TEST(Handle, DragMovesOnlyTheEdgesTheHandleTouches)
{
    const Edges tl = dragEdges(Handle::topLeft, rect, 5, 7);
    EXPECT_EQ(tl.minX, 15);
    EXPECT_EQ(tl.maxX, 110);
    EXPECT_EQ(tl.minY, 20);
    EXPECT_EQ(tl.maxY, 77);

    const Edges b = dragEdges(Handle::bottom, rect, 30, -8);
    EXPECT_EQ(b.minX, 10);
    EXPECT_EQ(b.maxX, 110);
    EXPECT_EQ(b.minY, 12);
    EXPECT_EQ(b.maxY, 70);
}

TEST(Handle, DragAcrossTheOppositeEdgeGivesNegativeSize)
{
    const Edges e = dragEdges(Handle::topLeft, rect, 150, -80);
    EXPECT_GT(e.minX, e.maxX);
    EXPECT_LT(e.maxY, e.minY);
}
