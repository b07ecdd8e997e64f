#include "annotation/Annotation.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace glimpso;

// Each tolerance is probed a hundredth of a point inside and outside its edge.
namespace {

const QColor red(255, 59, 48);
constexpr double e = 0.01;

} // namespace

TEST(HitTest, PencilHitsWithinSixOfAThinStroke)
{
    const auto pencil = Annotation::pencil({{0, 0}, {100, 0}, {100, 100}}, red, 2);
    EXPECT_TRUE(pencil.hitTest({50, 6 - e}));
    EXPECT_FALSE(pencil.hitTest({50, 6 + e}));
    EXPECT_TRUE(pencil.hitTest({100 + 6 - e, 50}));
    EXPECT_FALSE(pencil.hitTest({100 + 6 + e, 50}));
}

TEST(HitTest, PencilEndsAreRound)
{
    const auto pencil = Annotation::pencil({{0, 0}, {100, 0}}, red, 2);
    const double d = (6 - e) / std::sqrt(2.0);
    EXPECT_TRUE(pencil.hitTest({-d, -d}));
    const double far = (6 + e) / std::sqrt(2.0);
    EXPECT_FALSE(pencil.hitTest({-far, -far}));
}

TEST(HitTest, ThickPencilHitsWithinHalfItsWidthPlusFour)
{
    const auto pencil = Annotation::pencil({{0, 0}, {100, 0}}, red, 10);
    EXPECT_TRUE(pencil.hitTest({50, 9 - e}));
    EXPECT_FALSE(pencil.hitTest({50, 9 + e}));
}

TEST(HitTest, HighlightUsesThePencilTolerance)
{
    const auto highlight = Annotation::highlight({{0, 0}, {100, 0}}, Annotation::highlightYellow(), 18);
    EXPECT_TRUE(highlight.hitTest({50, 13 - e}));
    EXPECT_FALSE(highlight.hitTest({50, 13 + e}));
}

TEST(HitTest, PencilOfOnePointIsNeverHit)
{
    EXPECT_FALSE(Annotation::pencil({{10, 10}}, red, 3).hitTest({10, 10}));
}

TEST(HitTest, LineHitsWithinSevenOfAThinShaft)
{
    const auto line = Annotation::line({0, 0}, {100, 0}, red, 2);
    EXPECT_TRUE(line.hitTest({50, -(7 - e)}));
    EXPECT_FALSE(line.hitTest({50, -(7 + e)}));
    EXPECT_TRUE(line.hitTest({100 + 7 - e, 0}));
    EXPECT_FALSE(line.hitTest({100 + 7 + e, 0}));
}

TEST(HitTest, ThickArrowHitsWithinHalfItsWidthPlusFive)
{
    const auto arrow = Annotation::arrow({0, 0}, {100, 0}, red, 10);
    EXPECT_TRUE(arrow.hitTest({50, 10 - e}));
    EXPECT_FALSE(arrow.hitTest({50, 10 + e}));
}

TEST(HitTest, ArrowHeadIsNotPartOfThePickingArea)
{
    const auto arrow = Annotation::arrow({0, 0}, {100, 0}, red, 5);
    const QPointF headEnd = arrow.as<Annotation::Arrow>()->headEnds()[0];
    ASSERT_GT(std::abs(headEnd.y()), 7.5);
    EXPECT_FALSE(arrow.hitTest(headEnd));
}

TEST(HitTest, BentLineIsPickedAlongItsCurve)
{
    const auto line = Annotation::line({0, 0}, {100, 0}, red, 2, QPointF(50, 30));
    // The curve's farthest point from the chord is the bend, with the curve
    // horizontal there; on its outer side the nearest point is the bend.
    EXPECT_TRUE(line.hitTest({50, 30 + 7 - e}));
    EXPECT_FALSE(line.hitTest({50, 30 + 7 + e}));
    EXPECT_TRUE(line.hitTest({50, 30 - 7 + e}));
    // The straight chord is no longer part of the line.
    EXPECT_FALSE(line.hitTest({50, 0}));
    EXPECT_FALSE(line.hitTest({50, 15}));
}

TEST(HitTest, RectangleIsPickedOnlyNearItsOutline)
{
    const auto rect = Annotation::rect({0, 0, 100, 100}, red, 1);
    EXPECT_TRUE(rect.hitTest({-8 + e, 50}));
    EXPECT_FALSE(rect.hitTest({-8 - e, 50}));
    EXPECT_TRUE(rect.hitTest({8 - e, 50}));
    EXPECT_FALSE(rect.hitTest({8 + e, 50}));
    EXPECT_FALSE(rect.hitTest({50, 50}));
}

TEST(HitTest, ClickFiveInsideAOnePointRectangleHitsAndNineInsideDoesNot)
{
    const auto rect = Annotation::rect({0, 0, 100, 100}, red, 1);
    EXPECT_TRUE(rect.hitTest({5, 50}));
    EXPECT_FALSE(rect.hitTest({9, 50}));
}

TEST(HitTest, ThickRectanglePadIsHalfItsWidthPlusSix)
{
    const auto rect = Annotation::rect({0, 0, 100, 100}, red, 10);
    EXPECT_TRUE(rect.hitTest({50, 100 + 11 - e}));
    EXPECT_FALSE(rect.hitTest({50, 100 + 11 + e}));
    EXPECT_TRUE(rect.hitTest({50, 100 - 11 + e}));
    EXPECT_FALSE(rect.hitTest({50, 100 - 11 - e}));
}

TEST(HitTest, SmallRectangleIsPickedAllOver)
{
    // Shrunk by the pad it has no inside left, so its middle is outline too.
    EXPECT_TRUE(Annotation::rect({0, 0, 12, 12}, red, 1).hitTest({6, 6}));
}

TEST(HitTest, EllipseIsPickedOnlyNearItsOutline)
{
    const auto ellipse = Annotation::ellipse({0, 0, 200, 100}, red, 2);
    const QPointF c(100, 50);
    EXPECT_TRUE(ellipse.hitTest(c + QPointF(108 - e, 0)));
    EXPECT_FALSE(ellipse.hitTest(c + QPointF(108 + e, 0)));
    EXPECT_TRUE(ellipse.hitTest(c + QPointF(92 + e, 0)));
    EXPECT_FALSE(ellipse.hitTest(c + QPointF(92 - e, 0)));
    EXPECT_TRUE(ellipse.hitTest(c + QPointF(0, 58 - e)));
    EXPECT_FALSE(ellipse.hitTest(c + QPointF(0, 58 + e)));
    EXPECT_FALSE(ellipse.hitTest(c));
}

TEST(HitTest, TextIsPickedInItsBoxGrownByFourAcrossAndTwoDown)
{
    const auto text = Annotation::text("Hello", {100, 100}, {}, red);
    const QRectF b = text.boundingRect();
    const double midY = b.center().y(), midX = b.center().x();
    EXPECT_TRUE(text.hitTest({b.left() - 4 + e, midY}));
    EXPECT_FALSE(text.hitTest({b.left() - 4 - e, midY}));
    EXPECT_TRUE(text.hitTest({b.right() + 4 - e, midY}));
    EXPECT_FALSE(text.hitTest({b.right() + 4 + e, midY}));
    EXPECT_TRUE(text.hitTest({midX, b.top() - 2 + e}));
    EXPECT_FALSE(text.hitTest({midX, b.top() - 2 - e}));
    EXPECT_TRUE(text.hitTest({midX, b.bottom() + 2 - e}));
    EXPECT_FALSE(text.hitTest({midX, b.bottom() + 2 + e}));
}

TEST(HitTest, BubbleIsPickedWithinItsRadius)
{
    const auto bubble = Annotation::sequence(1, {50, 50}, red, 14);
    EXPECT_TRUE(bubble.hitTest({50 + 14 - e, 50}));
    EXPECT_FALSE(bubble.hitTest({50 + 14 + e, 50}));
    const double diagonal = 14 / std::sqrt(2.0);
    EXPECT_TRUE(bubble.hitTest({50 + diagonal - e, 50 + diagonal - e}));
    EXPECT_FALSE(bubble.hitTest({50 + diagonal + e, 50 + diagonal + e}));
}

TEST(HitTest, MosaicIsPickedOverItsWholeArea)
{
    const auto mosaic = Annotation::mosaic({0, 0, 100, 50}, 16);
    EXPECT_TRUE(mosaic.hitTest({50, 25}));
    EXPECT_TRUE(mosaic.hitTest({e, 50 - e}));
    EXPECT_FALSE(mosaic.hitTest({-e, 25}));
    EXPECT_FALSE(mosaic.hitTest({50, 50 + e}));
}
