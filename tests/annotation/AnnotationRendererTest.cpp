#include "annotation/AnnotationRenderer.h"
#include "annotation/TextLook.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>

using namespace glimpso;

namespace {

const QColor red(0xFF, 0x3B, 0x30);
const QColor blue(0, 122, 255);
const QColor grey(128, 128, 128);
const QColor dark(30, 30, 30);
const QColor light(230, 230, 230);

QImage filled(QSize size, QColor colour)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return image;
}

// A picture where neighbouring pixels differ, so block averages tell blocks apart.
QImage gradient(QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb((x * 7) % 256, (y * 5) % 256, (x * 3 + y * 11) % 256));
    }
    return image;
}

// Pixel under a point of image space.
QColor at(const QImage &image, QPointF point, double scale)
{
    return image.pixelColor(int(std::floor(point.x() * scale)), int(std::floor(point.y() * scale)));
}

void expectColour(const QColor &actual, const QColor &expected, int tolerance = 0)
{
    EXPECT_NEAR(actual.red(), expected.red(), tolerance) << "red";
    EXPECT_NEAR(actual.green(), expected.green(), tolerance) << "green";
    EXPECT_NEAR(actual.blue(), expected.blue(), tolerance) << "blue";
}

// Multiply blend of a translucent colour over an opaque pixel:
// d x (1 - a + a x s) per channel.
QColor multiplied(const QColor &under, const QColor &over)
{
    const double a = over.alphaF();
    const auto channel = [a](int d, double s) { return int(std::lround(d * (1 - a + a * s))); };
    return QColor(channel(under.red(), over.redF()), channel(under.green(), over.greenF()),
                  channel(under.blue(), over.blueF()));
}

// The block of a grid of `block` pixels anchored at the centre of `pixels`.
int blockOf(int index, int pixels, double block)
{
    return int(std::floor((index + 0.5 - pixels / 2.0) / block));
}

// Plain average of the source pixels of the block that holds (x, y).
QColor blockAverage(const QImage &source, int x, int y, double block)
{
    const int bx = blockOf(x, source.width(), block), by = blockOf(y, source.height(), block);
    long sums[3] = {0, 0, 0};
    long count = 0;
    for (int j = 0; j < source.height(); ++j) {
        if (blockOf(j, source.height(), block) != by)
            continue;
        for (int i = 0; i < source.width(); ++i) {
            if (blockOf(i, source.width(), block) != bx)
                continue;
            const QRgb p = source.pixel(i, j);
            sums[0] += qRed(p);
            sums[1] += qGreen(p);
            sums[2] += qBlue(p);
            ++count;
        }
    }
    return QColor(int(std::lround(double(sums[0]) / count)), int(std::lround(double(sums[1]) / count)),
                  int(std::lround(double(sums[2]) / count)));
}

} // namespace

// ---- flatten: the whole ----

TEST(Flatten, WithNoAnnotationsReturnsTheVeryImage)
{
    const QImage image = gradient({64, 48});
    const QImage result = AnnotationRenderer::flatten(image, {}, 2);
    EXPECT_EQ(result.cacheKey(), image.cacheKey());
    EXPECT_EQ(result.constBits(), image.constBits());
}

TEST(Flatten, LeavesTheInputUntouched)
{
    const QImage image = filled({100, 100}, grey);
    const QImage before = image.copy();
    const QImage result =
        AnnotationRenderer::flatten(image, {Annotation::rect({10, 10, 50, 50}, red, 4)}, 1);
    EXPECT_EQ(image, before);
    EXPECT_NE(result, before);
    EXPECT_EQ(result.size(), image.size());
}

TEST(Flatten, ReturnsTheInputWhenThereIsNoPicture)
{
    const QImage none;
    EXPECT_TRUE(AnnotationRenderer::flatten(none, {Annotation::rect({0, 0, 5, 5}, red, 1)}, 1).isNull());
}

// ---- flatten: each case at scale 1 and 2 ----

class FlattenAt : public testing::TestWithParam<double> {
protected:
    double scale() const { return GetParam(); }
    QImage canvas(QColor colour = grey) const { return filled(QSize(200, 150) * scale(), colour); }
    QImage flatten(const QImage &image, const QList<Annotation> &marks) const
    {
        return AnnotationRenderer::flatten(image, marks, scale());
    }
};

TEST_P(FlattenAt, PencilIsStrokedInItsColourOnlyWhereItRuns)
{
    const QImage out = flatten(canvas(), {Annotation::pencil({{20, 40}, {180, 40}}, red, 6)});
    expectColour(at(out, {100, 40}, scale()), red);
    expectColour(at(out, {100, 42.4}, scale()), red);
    expectColour(at(out, {100, 44}, scale()), grey);
    expectColour(at(out, {100, 80}, scale()), grey);
}

TEST_P(FlattenAt, PencilEndsAreRound)
{
    const QImage out = flatten(canvas(), {Annotation::pencil({{20, 40}, {180, 40}}, red, 10)});
    expectColour(at(out, {17, 40}, scale()), red);
    // The corner a square cap would cover stays clear.
    expectColour(at(out, {15.2, 35.2}, scale()), grey);
}

TEST_P(FlattenAt, LongPencilIsStrokedAlongItsWholeTrace)
{
    QList<QPointF> zigzag;
    for (int i = 0; i < 60; ++i)
        zigzag.append(QPointF(10 + 3 * i, i % 2 ? 50 : 70));
    const QImage out = flatten(canvas(), {Annotation::pencil(zigzag, red, 4)});
    for (int i = 1; i + 1 < zigzag.size(); ++i) {
        expectColour(at(out, zigzag[i], scale()), red);
        expectColour(at(out, (zigzag[i] + zigzag[i + 1]) / 2, scale()), red);
    }
    expectColour(at(out, {100, 80}, scale()), grey);
    expectColour(at(out, {100, 40}, scale()), grey);
}

TEST_P(FlattenAt, LongTranslucentPencilIsLaidOnceWhereItsSegmentsMeet)
{
    QList<QPointF> trace;
    for (int i = 0; i < 40; ++i)
        trace.append(QPointF(10 + 4 * i, 75 + (i % 2)));
    const QColor translucent(0, 0, 255, 128);
    const QImage out = flatten(canvas(), {Annotation::pencil(trace, translucent, 6)});
    const QColor single = at(out, (trace[3] + trace[4]) / 2, scale());
    EXPECT_LT(single.red(), grey.red());
    for (int i : {8, 16, 17, 32})
        expectColour(at(out, trace[i], scale()), single, 2);
}

TEST_P(FlattenAt, LongDiagonalLineIsOneUnbrokenStrokeWithRoundEnds)
{
    const QPointF from(10, 10), to(190, 140);
    const double width = 6;
    const QImage out = flatten(canvas(), {Annotation::line(from, to, red, width)});
    const QPointF along = (to - from) / std::hypot((to - from).x(), (to - from).y());
    const QPointF across(-along.y(), along.x());
    for (int i = 0; i <= 20; ++i) {
        const QPointF p = from + (to - from) * (i / 20.0);
        expectColour(at(out, p, scale()), red);
        expectColour(at(out, p + across * (width / 2 + 1.5), scale()), grey);
        expectColour(at(out, p - across * (width / 2 + 1.5), scale()), grey);
    }
    expectColour(at(out, to + along * (width / 2 - 1), scale()), red);
    expectColour(at(out, to + along * (width / 2 + 1.5), scale()), grey);
    expectColour(at(out, from - along * (width / 2 - 1), scale()), red);
}

TEST_P(FlattenAt, LineAndBentArrowAreStroked)
{
    const QImage out = flatten(canvas(), {Annotation::line({20, 20}, {180, 20}, blue, 4),
                                          Annotation::arrow({20, 120}, {180, 120}, red, 4, QPointF(100, 80))});
    expectColour(at(out, {100, 20}, scale()), blue);
    expectColour(at(out, {100, 80}, scale()), red);   // through the bend
    expectColour(at(out, {100, 120}, scale()), grey); // not the chord
}

TEST_P(FlattenAt, ArrowHeadIsTwoStrokesFromTheTip)
{
    const auto arrow = Annotation::arrow({20, 75}, {150, 75}, red, 4);
    const QImage out = flatten(canvas(), {arrow});
    for (QPointF end : arrow.as<Annotation::Arrow>()->headEnds())
        expectColour(at(out, (end + QPointF(150, 75)) / 2, scale()), red);
}

TEST_P(FlattenAt, ArrowHeadIsOpen)
{
    // Width 2: a head 12 long; 11 behind the tip its strokes lie 5.3 off the
    // shaft, so between stroke and shaft the picture shows.
    const QImage out = flatten(canvas(), {Annotation::arrow({20, 75}, {150, 75}, red, 2)});
    expectColour(at(out, {139, 72.6}, scale()), grey);
    expectColour(at(out, {139, 77.4}, scale()), grey);
}

TEST_P(FlattenAt, RectangleAndEllipseAreOutlinesWithoutFill)
{
    const QImage out = flatten(canvas(), {Annotation::rect({20, 20, 60, 40}, red, 4),
                                          Annotation::ellipse({100, 20, 80, 60}, blue, 4)});
    expectColour(at(out, {20, 40}, scale()), red);
    expectColour(at(out, {50, 40}, scale()), grey);
    expectColour(at(out, {100, 50}, scale()), blue);
    expectColour(at(out, {140, 50}, scale()), grey);
}

TEST_P(FlattenAt, HighlightMultipliesOverDarkAndLightPixels)
{
    QImage image = canvas(dark);
    {
        QPainter painter(&image);
        painter.fillRect(QRectF(100 * scale(), 0, 100 * scale(), 150 * scale()), light);
    }
    const QColor yellow = Annotation::highlightYellow();
    const QImage out = flatten(image, {Annotation::highlight({{20, 75}, {180, 75}}, yellow, 18)});
    expectColour(at(out, {50, 75}, scale()), multiplied(dark, yellow), 1);
    expectColour(at(out, {150, 75}, scale()), multiplied(light, yellow), 1);
    // Multiply never lightens: every channel stays at or below the picture's.
    for (QPointF p : {QPointF(50, 75), QPointF(150, 75)}) {
        const QColor under = at(image, p, scale()), over = at(out, p, scale());
        EXPECT_LE(over.red(), under.red());
        EXPECT_LE(over.green(), under.green());
        EXPECT_LE(over.blue(), under.blue());
    }
    EXPECT_LT(at(out, {50, 75}, scale()).value(), 40);
}

TEST_P(FlattenAt, HighlightEndsAreCutSquare)
{
    const QImage out =
        flatten(canvas(), {Annotation::highlight({{20, 75}, {180, 75}}, Annotation::highlightYellow(), 18)});
    expectColour(at(out, {183, 75}, scale()), grey);
    expectColour(at(out, {17, 75}, scale()), grey);
}

TEST_P(FlattenAt, HighlightCrossingItselfIsLaidOnce)
{
    const QColor yellow = Annotation::highlightYellow();
    const QImage out = flatten(
        canvas(), {Annotation::highlight({{20, 60}, {120, 60}, {120, 20}, {80, 20}, {80, 130}}, yellow, 18)});
    expectColour(at(out, {80, 60}, scale()), at(out, {50, 60}, scale()), 1);
    expectColour(at(out, {50, 60}, scale()), multiplied(grey, yellow), 1);
}

TEST_P(FlattenAt, SeparateHighlightsMultiplyWithEachOther)
{
    const QColor yellow = Annotation::highlightYellow();
    const QImage out = flatten(canvas(), {Annotation::highlight({{20, 60}, {180, 60}}, yellow, 18),
                                          Annotation::highlight({{100, 20}, {100, 130}}, yellow, 18)});
    expectColour(at(out, {100, 60}, scale()), multiplied(multiplied(grey, yellow), yellow), 2);
}

TEST_P(FlattenAt, BubbleIsAFilledCircleWithAWhiteRingAndNumber)
{
    const QPointF centre(100, 75);
    const double radius = 20;
    const QImage out = flatten(canvas(), {Annotation::sequence(1, centre, blue, radius)});
    expectColour(at(out, centre + QPointF(radius * 0.8, 0), scale()), blue);
    expectColour(at(out, centre + QPointF(radius + 2, 0), scale()), grey);
    // The ring: lighter than both the fill and the picture on the circle itself.
    const QColor ring = at(out, centre + QPointF(0, -radius), scale());
    EXPECT_GT(ring.red(), 150);
    EXPECT_GT(ring.green(), 150);
    // The number: white pixels near the centre.
    int white = 0;
    const QPoint c = (centre * scale()).toPoint();
    const int half = int(radius * 0.5 * scale());
    for (int y = c.y() - half; y <= c.y() + half; ++y) {
        for (int x = c.x() - half; x <= c.x() + half; ++x)
            white += out.pixel(x, y) == qRgb(255, 255, 255);
    }
    EXPECT_GT(white, 10 * scale() * scale());
}

TEST_P(FlattenAt, BubbleNumberIsCentredOnTheCircle)
{
    const QPointF centre(100, 75);
    const QImage out = flatten(canvas(blue), {Annotation::sequence(8, centre, blue, 30)});
    // Only the number is white apart from the ring; its ink is centred.
    QRect ink;
    const QRect inner = QRectF((centre - QPointF(20, 20)) * scale(), (centre + QPointF(20, 20)) * scale()).toRect();
    for (int y = inner.top(); y <= inner.bottom(); ++y) {
        for (int x = inner.left(); x <= inner.right(); ++x) {
            if (qRed(out.pixel(x, y)) > 128)
                ink = ink.united(QRect(x, y, 1, 1));
        }
    }
    ASSERT_FALSE(ink.isEmpty());
    EXPECT_NEAR(ink.center().x() / scale(), centre.x(), 1.5);
    EXPECT_NEAR(ink.center().y() / scale(), centre.y(), 4);
}

TEST_P(FlattenAt, TextIsDrawnIntoItsBoxBelowTheOrigin)
{
    TextOptions options;
    options.size = 24;
    options.style = TextStyle::background;
    const QPointF origin(30, 40);
    const QSizeF box = TextLook::boxSize("Note", options);
    const QImage out = flatten(canvas(), {Annotation::text("Note", origin, options, blue)});
    const QPointF inset = TextLook::insets(options);
    expectColour(at(out, origin + QPointF(inset.x() / 2, box.height() / 2), scale()), blue);
    expectColour(at(out, origin + QPointF(box.width() - inset.x() / 2, box.height() / 2), scale()), blue);
    expectColour(at(out, origin + QPointF(box.width() / 2, -2), scale()), grey);
    expectColour(at(out, origin + QPointF(box.width() / 2, box.height() + 2), scale()), grey);
}

TEST_P(FlattenAt, LaterAnnotationsLieOnTop)
{
    const QImage out = flatten(canvas(), {Annotation::pencil({{20, 40}, {180, 40}}, red, 8),
                                          Annotation::pencil({{100, 10}, {100, 100}}, blue, 8)});
    expectColour(at(out, {100, 40}, scale()), blue);
}

// ---- mosaics ----

TEST_P(FlattenAt, MosaicBlocksAreOneColourAndAnchoredAtTheImageCentre)
{
    const QSize pixels = QSize(164, 124) * scale();
    const QImage image = gradient(pixels);
    const double block = 8 * scale();
    const QImage out = AnnotationRenderer::flatten(
        image, {Annotation::mosaic({0, 0, 164, 124}, 8)}, scale());
    // Block edges lie at centre + k x block: 82 + 8k points across.
    for (int edge = 2; edge < 160; edge += 8) {
        const int x = int(edge * scale());
        const int y = int(60 * scale());
        EXPECT_NE(out.pixel(x - 1, y), out.pixel(x, y)) << "edge at " << edge;
        for (int i = 0; i + 1 < int(block) && x + i + 1 < pixels.width(); ++i)
            EXPECT_EQ(out.pixel(x + i, y), out.pixel(x + i + 1, y)) << "inside block at " << edge;
    }
    for (int edge = 6; edge < 116; edge += 8) {
        const int y = int(edge * scale());
        const int x = int(50 * scale());
        EXPECT_NE(out.pixel(x, y - 1), out.pixel(x, y)) << "row edge at " << edge;
        EXPECT_EQ(out.pixel(x, y), out.pixel(x, y + int(block) - 1));
    }
}

TEST_P(FlattenAt, MosaicShowsTheAverageOfTheVerticallyMirroredPlace)
{
    const QSize pixels = QSize(96, 64) * scale();
    const QImage image = gradient(pixels);
    const double block = 8 * scale();
    const QImage out = AnnotationRenderer::flatten(image, {Annotation::mosaic({8, 8, 40, 24}, 8)}, scale());
    for (QPointF p : {QPointF(10, 10), QPointF(30, 20), QPointF(45, 30)}) {
        const int x = int(p.x() * scale()), y = int(p.y() * scale());
        expectColour(out.pixelColor(x, y), blockAverage(image, x, pixels.height() - 1 - y, block), 1);
    }
    // Outside the frame the picture is untouched.
    EXPECT_EQ(out.pixel(int(60 * scale()), int(40 * scale())), image.pixel(int(60 * scale()), int(40 * scale())));
}

TEST_P(FlattenAt, MosaicTopShowsTheBottomOfTheImage)
{
    QImage image = filled(QSize(100, 100) * scale(), red);
    {
        QPainter painter(&image);
        painter.fillRect(QRectF(0, 50 * scale(), 100 * scale(), 50 * scale()), blue);
    }
    const QImage out = AnnotationRenderer::flatten(image, {Annotation::mosaic({0, 0, 100, 40}, 10)}, scale());
    expectColour(at(out, {20, 20}, scale()), blue);
    expectColour(at(out, {20, 45}, scale()), red);
}

TEST_P(FlattenAt, MosaicsShareTheLargestBlock)
{
    const QSize pixels = QSize(192, 128) * scale();
    const QImage image = gradient(pixels);
    const QImage out = AnnotationRenderer::flatten(
        image, {Annotation::mosaic({0, 0, 96, 128}, 8), Annotation::mosaic({96, 0, 96, 128}, 32)}, scale());
    // Centre (96, 64): blocks of 32 run [0, 32) [32, 64) ... across, and [0, 32) ... down.
    const int y = int(10 * scale());
    const QRgb first = out.pixel(int(1 * scale()), y);
    for (int x = int(1 * scale()); x < int(31 * scale()); ++x)
        EXPECT_EQ(out.pixel(x, y), first) << "small-block mosaic at " << x;
    EXPECT_NE(out.pixel(int(33 * scale()), y), first);
}

TEST_P(FlattenAt, MosaicCoversAnnotationsBelowItWithThePicture)
{
    const QImage out = flatten(canvas(), {Annotation::pencil({{20, 40}, {180, 40}}, red, 8),
                                          Annotation::mosaic({60, 20, 80, 40}, 16),
                                          Annotation::pencil({{100, 10}, {100, 100}}, blue, 4)});
    expectColour(at(out, {80, 40}, scale()), grey);
    expectColour(at(out, {40, 40}, scale()), red);
    expectColour(at(out, {100, 40}, scale()), blue);
}

INSTANTIATE_TEST_SUITE_P(Scales, FlattenAt, testing::Values(1.0, 2.0));

TEST(Flatten, ScaleTwoDoublesTheBlockInPixels)
{
    const QImage image = gradient({128, 96});
    const QImage out = AnnotationRenderer::flatten(image, {Annotation::mosaic({0, 0, 64, 48}, 8)}, 2);
    // Blocks of 16 pixels from the centre (64, 48): edges at 0, 16, 32 ... across.
    for (int x = 16; x < 128; x += 16) {
        EXPECT_NE(out.pixel(x - 1, 40), out.pixel(x, 40));
        EXPECT_EQ(out.pixel(x, 40), out.pixel(x + 15, 40));
    }
}

// ---- pixellate ----

TEST(Pixellate, AveragesEachBlockOfAGridAnchoredAtTheCentre)
{
    // 6 x 4 pixels, blocks of 4 from the centre (3, 2): columns [0, 3) [3, 6),
    // rows [0, 2) [2, 4).
    QImage image(6, 4, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 6; ++x)
            image.setPixel(x, y, qRgb(x * 40, y * 60, 100));
    }
    const auto result = AnnotationRenderer::pixellate(image, 4);
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->size(), image.size());
    expectColour(result->pixelColor(0, 0), QColor(40, 30, 100));
    expectColour(result->pixelColor(2, 1), QColor(40, 30, 100));
    expectColour(result->pixelColor(3, 0), QColor(160, 30, 100));
    expectColour(result->pixelColor(5, 3), QColor(160, 150, 100));
    expectColour(result->pixelColor(0, 2), QColor(40, 150, 100));
}

TEST(Pixellate, FractionalBlocksStillTileTheImage)
{
    const QImage image = gradient({50, 30});
    const auto result = AnnotationRenderer::pixellate(image, 7.5);
    ASSERT_TRUE(result.has_value());
    for (QPoint p : {QPoint(0, 0), QPoint(24, 14), QPoint(25, 15), QPoint(49, 29)})
        expectColour(result->pixelColor(p), blockAverage(image, p.x(), p.y(), 7.5), 1);
}

TEST(Pixellate, GivesNothingForAnEmptyImageOrBlock)
{
    EXPECT_FALSE(AnnotationRenderer::pixellate(QImage(), 8).has_value());
    EXPECT_FALSE(AnnotationRenderer::pixellate(gradient({10, 10}), 0).has_value());
}

// ---- drawing one mark ----

TEST(DrawMark, PaintsTheSameMarkAsFlatten)
{
    const Annotation mark = Annotation::ellipse({10, 10, 60, 40}, red, 3);
    QImage live = filled({100, 80}, grey);
    {
        QPainter painter(&live);
        AnnotationRenderer::drawMark(painter, mark);
    }
    const QImage flat = AnnotationRenderer::flatten(filled({100, 80}, grey), {mark}, 1);
    for (int y = 0; y < live.height(); ++y) {
        for (int x = 0; x < live.width(); ++x)
            ASSERT_EQ(live.pixel(x, y), flat.pixel(x, y)) << x << "," << y;
    }
}
