#include "annotation/Annotation.h"
#include "annotation/TextLook.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace glimpso;

namespace {

const QColor red(255, 59, 48);
const QColor blue(0, 122, 255);

void expectPoint(QPointF actual, QPointF expected, double tolerance = 1e-9)
{
    EXPECT_NEAR(actual.x(), expected.x(), tolerance);
    EXPECT_NEAR(actual.y(), expected.y(), tolerance);
}

void expectRect(const QRectF &actual, const QRectF &expected, double tolerance = 1e-6)
{
    EXPECT_NEAR(actual.left(), expected.left(), tolerance);
    EXPECT_NEAR(actual.top(), expected.top(), tolerance);
    EXPECT_NEAR(actual.width(), expected.width(), tolerance);
    EXPECT_NEAR(actual.height(), expected.height(), tolerance);
}

QPointF rotated(QPointF v, double angle)
{
    return {v.x() * std::cos(angle) - v.y() * std::sin(angle), v.x() * std::sin(angle) + v.y() * std::cos(angle)};
}

} // namespace

// ---- values ----

TEST(Annotation, HighlightYellowIsWarmYellowAtHalfAlpha)
{
    const QColor yellow = Annotation::highlightYellow();
    EXPECT_NEAR(yellow.redF(), 1.0, 1e-3);
    EXPECT_NEAR(yellow.greenF(), 0.84, 1e-3);
    EXPECT_NEAR(yellow.blueF(), 0.04, 1e-3);
    EXPECT_NEAR(yellow.alphaF(), 0.5, 1e-3);
}

TEST(Annotation, CopiesAreIndependentValues)
{
    const Annotation original = Annotation::line({0, 0}, {10, 0}, red, 3);
    Annotation copy = original;
    EXPECT_EQ(copy, original);
    copy = copy.translated({5, 5});
    EXPECT_NE(copy, original);
    expectPoint(original.as<Annotation::Line>()->from, {0, 0});
}

TEST(Annotation, CasesWithTheSameFieldsStayDistinct)
{
    EXPECT_NE(Annotation::line({0, 0}, {10, 0}, red, 3), Annotation::arrow({0, 0}, {10, 0}, red, 3));
    EXPECT_NE(Annotation::pencil({{0, 0}, {1, 1}}, red, 3), Annotation::highlight({{0, 0}, {1, 1}}, red, 3));
}

// ---- path ----

TEST(AnnotationPath, PencilDrawsExactlyThePointsStored)
{
    const QList<QPointF> points{{0, 0}, {3, 1}, {4, 7}, {9, 2}};
    const QPainterPath path = Annotation::pencil(points, red, 3).path();
    ASSERT_EQ(path.elementCount(), points.size());
    EXPECT_TRUE(path.elementAt(0).isMoveTo());
    for (int i = 0; i < points.size(); ++i) {
        expectPoint(path.elementAt(i), points[i]);
        if (i > 0) {
            EXPECT_TRUE(path.elementAt(i).isLineTo());
        }
    }
}

TEST(AnnotationPath, EmptyPencilGivesAnEmptyPath)
{
    EXPECT_TRUE(Annotation::pencil({}, red, 3).path().isEmpty());
    EXPECT_TRUE(Annotation::highlight({}, red, 18).path().isEmpty());
}

TEST(AnnotationPath, StraightLineGoesFromTo)
{
    const QPainterPath path = Annotation::line({1, 2}, {30, 40}, red, 3).path();
    ASSERT_EQ(path.elementCount(), 2);
    expectPoint(path.elementAt(0), {1, 2});
    expectPoint(path.elementAt(1), {30, 40});
}

TEST(AnnotationPath, BentLinePassesThroughTheBendAtItsMiddle)
{
    const QPointF from(0, 0), to(100, 0), bend(50, 30);
    const QPainterPath path = Annotation::line(from, to, red, 3, bend).path();
    // The quadratic comes back as the equivalent cubic: move, two controls, end.
    ASSERT_EQ(path.elementCount(), 4);
    const QPointF c1 = path.elementAt(1), c2 = path.elementAt(2), end = path.elementAt(3);
    const QPointF middle = 0.125 * from + 0.375 * c1 + 0.375 * c2 + 0.125 * end;
    expectPoint(middle, bend, 1e-9);
    expectPoint(end, to);
}

TEST(AnnotationPath, ArrowAddsTwoOpenHeadStrokesFromTheTip)
{
    const QPainterPath path = Annotation::arrow({0, 0}, {100, 0}, red, 2).path();
    ASSERT_EQ(path.elementCount(), 6);
    EXPECT_TRUE(path.elementAt(2).isMoveTo());
    expectPoint(path.elementAt(2), {100, 0});
    EXPECT_TRUE(path.elementAt(4).isMoveTo());
    expectPoint(path.elementAt(4), {100, 0});
}

TEST(AnnotationPath, RectangleHasCornersOfRadiusTwo)
{
    const QRectF frame(10, 10, 50, 40);
    const QPainterPath path = Annotation::rect(frame, red, 3).path();
    expectRect(path.boundingRect(), frame);
    EXPECT_FALSE(path.contains(frame.topLeft() + QPointF(0.3, 0.3)));
    EXPECT_TRUE(path.contains(frame.topLeft() + QPointF(1.5, 1.5)));
}

TEST(AnnotationPath, ThinRectangleCornerRadiusIsHalfItsSide)
{
    const QRectF frame(0, 0, 1, 40);
    const QPainterPath path = Annotation::rect(frame, red, 3).path();
    expectRect(path.boundingRect(), frame);
    EXPECT_TRUE(path.contains(QPointF(0.5, 20)));
}

TEST(AnnotationPath, EllipseAndMosaicFillTheirFrame)
{
    const QRectF frame(5, 5, 40, 20);
    expectRect(Annotation::ellipse(frame, red, 3).path().boundingRect(), frame);
    const QPainterPath mosaic = Annotation::mosaic(frame, 16).path();
    expectRect(mosaic.boundingRect(), frame);
    EXPECT_TRUE(mosaic.contains(frame.topLeft() + QPointF(0.1, 0.1)));
}

TEST(AnnotationPath, TextAndBubblesHaveNoPath)
{
    EXPECT_TRUE(Annotation::text("Hi", {0, 0}, {}, red).path().isEmpty());
    EXPECT_TRUE(Annotation::sequence(1, {10, 10}, red, 14).path().isEmpty());
}

// ---- arrow head ----

TEST(ArrowHead, StraightArrowOfWidthTwoHasAHead12Long)
{
    const auto arrow = Annotation::arrow({0, 0}, {100, 0}, red, 2);
    const auto ends = arrow.as<Annotation::Arrow>()->headEnds();
    const double a = std::cos(std::numbers::pi / 7), b = std::sin(std::numbers::pi / 7);
    expectPoint(ends[0], {100 - 12 * a, -12 * b});
    expectPoint(ends[1], {100 - 12 * a, 12 * b});
}

TEST(ArrowHead, ArrowOfWidthFiveHasAHead20Long)
{
    const auto arrow = Annotation::arrow({0, 0}, {0, 50}, red, 5);
    for (QPointF end : arrow.as<Annotation::Arrow>()->headEnds())
        EXPECT_NEAR(std::hypot(end.x(), end.y() - 50), 20.0, 1e-9);
}

TEST(ArrowHead, BentArrowHeadFollowsTheTangentAtItsTip)
{
    const QPointF from(0, 0), to(100, 0), bend(50, 30);
    const auto arrow = Annotation::arrow(from, to, red, 2, bend);
    // The tangent at the tip of a quadratic points from its control point.
    const QPointF c = 2.0 * bend - (from + to) / 2.0;
    const QPointF back = (c - to) / std::hypot((c - to).x(), (c - to).y());
    const auto ends = arrow.as<Annotation::Arrow>()->headEnds();
    expectPoint(ends[0], to + 12 * rotated(back, std::numbers::pi / 7));
    expectPoint(ends[1], to + 12 * rotated(back, -std::numbers::pi / 7));
}

TEST(ArrowHead, ZeroLengthArrowDoesNotDivideByZero)
{
    const auto arrow = Annotation::arrow({7, 7}, {7, 7}, red, 3);
    for (QPointF end : arrow.as<Annotation::Arrow>()->headEnds()) {
        EXPECT_TRUE(std::isfinite(end.x()) && std::isfinite(end.y()));
        expectPoint(end, {7, 7});
    }
    const QPainterPath path = arrow.path();
    for (int i = 0; i < path.elementCount(); ++i)
        EXPECT_TRUE(std::isfinite(path.elementAt(i).x) && std::isfinite(path.elementAt(i).y));
}

// ---- stroke colour ----

TEST(AnnotationStrokeColor, IsTheMarksColourAndTranslucentWhiteForMosaics)
{
    EXPECT_EQ(Annotation::rect({0, 0, 5, 5}, blue, 2).strokeColor(), blue);
    EXPECT_EQ(Annotation::text("a", {0, 0}, {}, blue).strokeColor(), blue);
    const QColor mosaic = Annotation::mosaic({0, 0, 5, 5}, 16).strokeColor();
    EXPECT_EQ(mosaic.rgb(), QColor(Qt::white).rgb());
    EXPECT_NEAR(mosaic.alphaF(), 0.6, 1e-3);
}

// ---- bounding rectangle ----

TEST(AnnotationBoundingRect, PencilOfOnePointHasAnEmptyStroke)
{
    EXPECT_TRUE(Annotation::pencil({{10, 10}}, red, 3).boundingRect().isEmpty());
}

TEST(AnnotationBoundingRect, ThinPencilIsStrokedAtLeastFourWide)
{
    expectRect(Annotation::pencil({{0, 0}, {10, 0}}, red, 1).boundingRect(), {-2, -2, 14, 4}, 0.05);
}

TEST(AnnotationBoundingRect, ThickHighlightIsStrokedAtItsWidth)
{
    expectRect(Annotation::highlight({{0, 0}, {10, 0}}, red, 18).boundingRect(), {-9, -9, 28, 18}, 0.05);
}

TEST(AnnotationBoundingRect, ArrowBoundsIgnoreTheHead)
{
    // The head reaches 12 sin(pi/7) = 5.2 off the shaft; the bounds only 2.
    expectRect(Annotation::arrow({0, 0}, {100, 0}, red, 2).boundingRect(), {-2, -2, 104, 4}, 0.05);
}

TEST(AnnotationBoundingRect, BentShaftIsStrokedAsItsCurve)
{
    // Symmetric curve: its furthest point from the chord is the bend itself.
    const QRectF bounds = Annotation::line({0, 0}, {100, 0}, red, 6, QPointF(50, 30)).boundingRect();
    EXPECT_NEAR(bounds.bottom(), 33, 0.1);
    EXPECT_NEAR(bounds.top(), -3, 0.1);
}

TEST(AnnotationBoundingRect, FramedShapesGrowByHalfTheirWidth)
{
    expectRect(Annotation::rect({10, 10, 40, 30}, red, 6).boundingRect(), {7, 7, 46, 36});
    expectRect(Annotation::ellipse({10, 10, 40, 30}, red, 1).boundingRect(), {9.5, 9.5, 41, 31});
}

TEST(AnnotationBoundingRect, TextBoxHangsFromItsOriginInYUpSpace)
{
    TextOptions options;
    options.size = 24;
    const QSizeF box = TextLook::boxSize("Label", options);
    expectRect(Annotation::text("Label", {100, 200}, options, red).boundingRect(),
               {100, 200 - box.height(), box.width(), box.height()});
}

TEST(AnnotationBoundingRect, BubbleIsTheSquareAroundItsCircle)
{
    expectRect(Annotation::sequence(3, {50, 60}, red, 14).boundingRect(), {36, 46, 28, 28});
}

TEST(AnnotationBoundingRect, MosaicIsItsFrame)
{
    expectRect(Annotation::mosaic({3, 4, 50, 60}, 16).boundingRect(), {3, 4, 50, 60});
}

// ---- point handles ----

TEST(PointHandles, StraightLineOffersFromMidpointTo)
{
    const auto handles = Annotation::line({0, 0}, {100, 50}, red, 3).pointHandles();
    ASSERT_TRUE(handles.has_value());
    expectPoint((*handles)[0], {0, 0});
    expectPoint((*handles)[1], {50, 25});
    expectPoint((*handles)[2], {100, 50});
}

TEST(PointHandles, BentArrowOffersItsBendAsTheMiddle)
{
    const auto handles = Annotation::arrow({0, 0}, {100, 0}, red, 3, QPointF(40, 30)).pointHandles();
    ASSERT_TRUE(handles.has_value());
    expectPoint((*handles)[1], {40, 30});
}

TEST(PointHandles, OtherCasesHaveNone)
{
    EXPECT_FALSE(Annotation::pencil({{0, 0}, {5, 5}}, red, 3).pointHandles());
    EXPECT_FALSE(Annotation::highlight({{0, 0}, {5, 5}}, red, 3).pointHandles());
    EXPECT_FALSE(Annotation::rect({0, 0, 5, 5}, red, 3).pointHandles());
    EXPECT_FALSE(Annotation::ellipse({0, 0, 5, 5}, red, 3).pointHandles());
    EXPECT_FALSE(Annotation::text("a", {0, 0}, {}, red).pointHandles());
    EXPECT_FALSE(Annotation::sequence(1, {0, 0}, red, 14).pointHandles());
    EXPECT_FALSE(Annotation::mosaic({0, 0, 5, 5}, 16).pointHandles());
}

// ---- moving point handles ----

TEST(MovingPointHandle, EndHandlesMoveTheirEndAndKeepTheBend)
{
    const auto line = Annotation::line({0, 0}, {100, 0}, red, 3, QPointF(50, 40));
    const Annotation::Line movedFrom = *line.movingPointHandle(0, {10, 10}).as<Annotation::Line>();
    expectPoint(movedFrom.from, {10, 10});
    expectPoint(*movedFrom.bend, {50, 40});
    const Annotation::Line movedTo = *line.movingPointHandle(2, {90, 20}).as<Annotation::Line>();
    expectPoint(movedTo.to, {90, 20});
    expectPoint(*movedTo.bend, {50, 40});
}

TEST(MovingPointHandle, MiddleHandleBendsTheLineThroughThePoint)
{
    const auto bent = Annotation::arrow({0, 0}, {100, 0}, red, 3).movingPointHandle(1, {30, 25});
    expectPoint(*bent.as<Annotation::Arrow>()->bend, {30, 25});
}

TEST(MovingPointHandle, BendSnapsStraightWithinThreePoints)
{
    const auto line = Annotation::line({0, 0}, {100, 0}, red, 3, QPointF(50, 40));
    EXPECT_FALSE(line.movingPointHandle(1, {70, 2.99}).as<Annotation::Line>()->bend.has_value());
    EXPECT_FALSE(line.movingPointHandle(1, {70, -2.99}).as<Annotation::Line>()->bend.has_value());
    EXPECT_TRUE(line.movingPointHandle(1, {70, 3.01}).as<Annotation::Line>()->bend.has_value());
}

TEST(MovingPointHandle, SnapMeasuresDistanceFromTheInfiniteLine)
{
    // Past the end of the segment but 2 points off its line: still straight.
    const auto line = Annotation::line({0, 0}, {30, 40}, red, 3);
    const QPointF alongBeyond(60, 80);
    const QPointF normal(-0.8, 0.6);
    EXPECT_FALSE(line.movingPointHandle(1, alongBeyond + 2.0 * normal).as<Annotation::Line>()->bend);
    EXPECT_TRUE(line.movingPointHandle(1, alongBeyond + 4.0 * normal).as<Annotation::Line>()->bend);
}

TEST(MovingPointHandle, SnappedLineReportsItsTrueMidpoint)
{
    const auto snapped =
        Annotation::line({0, 0}, {100, 0}, red, 3, QPointF(50, 40)).movingPointHandle(1, {80, 1});
    expectPoint((*snapped.pointHandles())[1], {50, 0});
}

TEST(MovingPointHandle, LineWithCoincidentEndsNeverBends)
{
    const auto dot = Annotation::line({20, 20}, {20, 20}, red, 3);
    for (QPointF p : {QPointF(20, 80), QPointF(-50, 3), QPointF(20, 20)})
        EXPECT_FALSE(dot.movingPointHandle(1, p).as<Annotation::Line>()->bend.has_value());
}

TEST(MovingPointHandle, OtherCasesReturnThemselves)
{
    const auto rect = Annotation::rect({0, 0, 10, 10}, red, 3);
    EXPECT_EQ(rect.movingPointHandle(0, {50, 50}), rect);
    const auto bubble = Annotation::sequence(2, {5, 5}, red, 14);
    EXPECT_EQ(bubble.movingPointHandle(1, {50, 50}), bubble);
}

// ---- translated ----

TEST(Translated, MovesEveryPointOfEachCase)
{
    const QPointF d(5, -3);
    const auto pencil = Annotation::pencil({{0, 0}, {1, 2}}, red, 3).translated(d);
    expectPoint(pencil.as<Annotation::Pencil>()->points[1], {6, -1});
    const auto arrow = Annotation::arrow({0, 0}, {10, 0}, red, 3, QPointF(5, 5)).translated(d);
    expectPoint(arrow.as<Annotation::Arrow>()->from, {5, -3});
    expectPoint(arrow.as<Annotation::Arrow>()->to, {15, -3});
    expectPoint(*arrow.as<Annotation::Arrow>()->bend, {10, 2});
    expectRect(Annotation::ellipse({1, 1, 4, 4}, red, 3).translated(d).as<Annotation::Ellipse>()->frame,
               {6, -2, 4, 4});
    expectRect(Annotation::mosaic({1, 1, 4, 4}, 8).translated(d).as<Annotation::Mosaic>()->frame, {6, -2, 4, 4});
    expectPoint(Annotation::text("a", {1, 1}, {}, red).translated(d).as<Annotation::Text>()->origin, {6, -2});
    expectPoint(Annotation::sequence(1, {1, 1}, red, 9).translated(d).as<Annotation::Sequence>()->center, {6, -2});
}

TEST(Translated, KeepsAStraightLineStraight)
{
    EXPECT_FALSE(Annotation::line({0, 0}, {10, 0}, red, 3).translated({4, 4}).as<Annotation::Line>()->bend);
}

// ---- mapped ----

TEST(Mapped, FlipsIntoImageSpaceLeavingSizesAlone)
{
    const QRectF selection(100, 100, 200, 150);
    const auto toImage = [selection](QPointF p) { return QPointF(p.x() - selection.left(), selection.bottom() - p.y()); };
    const auto rectToImage = [selection](const QRectF &r) {
        return QRectF(r.left() - selection.left(), selection.bottom() - r.bottom(), r.width(), r.height());
    };
    const auto rect = Annotation::rect({120, 200, 30, 20}, red, 5).mapped(toImage, rectToImage);
    expectRect(rect.as<Annotation::Rect>()->frame, {20, 30, 30, 20});
    EXPECT_EQ(rect.as<Annotation::Rect>()->width, 5);
    const auto bubble = Annotation::sequence(4, {110, 240}, red, 14).mapped(toImage, rectToImage);
    expectPoint(bubble.as<Annotation::Sequence>()->center, {10, 10});
    EXPECT_EQ(bubble.as<Annotation::Sequence>()->radius, 14);
}

// ---- resized ----

TEST(Resized, PencilPointsKeepTheirFractionalPlaceAndWidth)
{
    const auto pencil = Annotation::pencil({{0, 0}, {100, 50}}, red, 4);
    const QRectF b = pencil.boundingRect();
    const QRectF r(0, 0, 2 * b.width(), 3 * b.height());
    const Annotation::Pencil resized = *pencil.resized(r).as<Annotation::Pencil>();
    for (int i = 0; i < 2; ++i) {
        const QPointF p = pencil.as<Annotation::Pencil>()->points[i];
        expectPoint(resized.points[i],
                    {(p.x() - b.left()) / b.width() * r.width(), (p.y() - b.top()) / b.height() * r.height()}, 1e-6);
    }
    EXPECT_EQ(resized.width, 4);
}

TEST(Resized, HighlightAndStraightLineMapTheirPoints)
{
    const auto highlight = Annotation::highlight({{10, 10}, {50, 30}}, Annotation::highlightYellow(), 18);
    const QRectF hb = highlight.boundingRect();
    const QRectF doubled(hb.left(), hb.top(), 2 * hb.width(), 2 * hb.height());
    const auto resizedHighlight = *highlight.resized(doubled).as<Annotation::Highlight>();
    expectPoint(resizedHighlight.points[1], hb.topLeft() + 2 * (QPointF(50, 30) - hb.topLeft()), 1e-6);
    EXPECT_EQ(resizedHighlight.width, 18);

    const auto line = Annotation::line({0, 0}, {40, 0}, red, 2);
    const QRectF lb = line.boundingRect();
    const auto resizedLine = *line.resized(lb.translated(5, 5)).as<Annotation::Line>();
    expectPoint(resizedLine.to, {45, 5}, 1e-6);
    EXPECT_FALSE(resizedLine.bend.has_value());
}

TEST(Resized, LineMovesItsEndsAndBend)
{
    const auto line = Annotation::arrow({10, 10}, {110, 10}, red, 3, QPointF(60, 50));
    const QRectF b = line.boundingRect();
    const QRectF r = b.translated(200, 100);
    const Annotation::Arrow resized = *line.resized(r).as<Annotation::Arrow>();
    expectPoint(resized.from, {210, 110}, 1e-6);
    expectPoint(resized.to, {310, 110}, 1e-6);
    expectPoint(*resized.bend, {260, 150}, 1e-6);
}

TEST(Resized, FramedShapesTakeTheHandlesRectangleStrokeMarginAndAll)
{
    const auto rect = Annotation::rect({10, 10, 40, 30}, red, 6);
    // Resizing to its own bounds grows the frame by half a stroke a side.
    expectRect(rect.resized(rect.boundingRect()).as<Annotation::Rect>()->frame, {7, 7, 46, 36});
    const QRectF target(0, 0, 80, 20);
    expectRect(Annotation::ellipse({1, 1, 2, 2}, red, 1).resized(target).as<Annotation::Ellipse>()->frame, target);
    expectRect(Annotation::mosaic({1, 1, 2, 2}, 16).resized(target).as<Annotation::Mosaic>()->frame, target);
}

TEST(Resized, ZeroSizedSidesMapToFractionZero)
{
    // A lone point has no stroke, so both sides of its bounds are zero.
    const auto dot = Annotation::pencil({{40, 40}}, red, 3).resized({5, 6, 70, 80});
    expectPoint(dot.as<Annotation::Pencil>()->points[0], {5, 6});
    // A mosaic of zero width takes the new frame, even one of no area.
    expectRect(Annotation::mosaic({4, 4, 0, 10}, 16).resized({0, 0, 0, 0}).as<Annotation::Mosaic>()->frame,
               {0, 0, 0, 0});
    // A bubble of radius 0 has zero-sized bounds; its centre goes to the corner.
    const auto bubble = Annotation::sequence(1, {9, 9}, red, 0).resized({20, 30, 10, 10});
    expectPoint(bubble.as<Annotation::Sequence>()->center, {20, 30});
    EXPECT_EQ(bubble.as<Annotation::Sequence>()->radius, 6);
}

TEST(Resized, TextScalesWithTheHeightOnly)
{
    TextOptions options;
    options.size = 20;
    const auto text = Annotation::text("Size", {100, 100}, options, red);
    const QRectF b = text.boundingRect();
    const Annotation::Text taller = *text.resized({b.left(), b.top(), b.width(), 2 * b.height()}).as<Annotation::Text>();
    EXPECT_NEAR(taller.options.size, 40, 1e-9);
    const Annotation::Text wider = *text.resized({b.left(), b.top(), 5 * b.width(), b.height()}).as<Annotation::Text>();
    EXPECT_NEAR(wider.options.size, 20, 1e-9);
    // The origin is the box's corner at its maximum y, and stays there.
    expectPoint(taller.origin, {b.left(), b.top() + 2 * b.height()}, 1e-9);
}

TEST(Resized, TextNeverGetsSmallerThanEight)
{
    const auto text = Annotation::text("Tiny", {0, 0}, {}, red);
    const QRectF b = text.boundingRect();
    const Annotation::Text squashed = *text.resized({b.left(), b.top(), b.width(), 1}).as<Annotation::Text>();
    EXPECT_EQ(squashed.options.size, 8);
}

TEST(Resized, BubbleScalesByTheShorterSide)
{
    const auto bubble = Annotation::sequence(7, {50, 50}, red, 10);
    const Annotation::Sequence resized = *bubble.resized({0, 0, 60, 40}).as<Annotation::Sequence>();
    EXPECT_NEAR(resized.radius, 10 * 40.0 / 20.0, 1e-9);
    expectPoint(resized.center, {30, 20});
    EXPECT_EQ(resized.number, 7);
}

TEST(Resized, BubbleNeverGetsSmallerThanSix)
{
    const auto resized = Annotation::sequence(1, {50, 50}, red, 14).resized({0, 0, 2, 2});
    EXPECT_EQ(resized.as<Annotation::Sequence>()->radius, 6);
}

// ---- recoloured ----

TEST(Recolored, StrokesTextAndBubblesTakeTheColour)
{
    const QList<Annotation> marks{
        Annotation::pencil({{0, 0}, {1, 1}}, red, 3), Annotation::line({0, 0}, {9, 9}, red, 3),
        Annotation::arrow({0, 0}, {9, 9}, red, 3),    Annotation::rect({0, 0, 5, 5}, red, 3),
        Annotation::ellipse({0, 0, 5, 5}, red, 3),    Annotation::text("a", {0, 0}, {}, red),
        Annotation::sequence(1, {0, 0}, red, 14),
    };
    for (const Annotation &mark : marks)
        EXPECT_EQ(mark.recolored(blue).strokeColor(), blue);
}

TEST(Recolored, HighlightTakesTheColourAtHalfAlpha)
{
    const QColor recoloured =
        Annotation::highlight({{0, 0}, {1, 1}}, Annotation::highlightYellow(), 18).recolored(blue).strokeColor();
    EXPECT_EQ(recoloured.rgb(), blue.rgb());
    EXPECT_NEAR(recoloured.alphaF(), 0.5, 1e-3);
}

TEST(Recolored, HighlightKeepsAColourThatCannotBeCopied)
{
    const QColor invalid;
    EXPECT_FALSE(Annotation::highlight({{0, 0}, {1, 1}}, red, 18).recolored(invalid).strokeColor().isValid());
}

TEST(Recolored, MosaicIsUnchanged)
{
    const auto mosaic = Annotation::mosaic({0, 0, 5, 5}, 16);
    EXPECT_EQ(mosaic.recolored(blue), mosaic);
}
