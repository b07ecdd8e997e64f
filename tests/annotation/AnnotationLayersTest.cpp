#include "annotation/AnnotationLayers.h"

#include "EventLoopWait.h"

#include <gtest/gtest.h>

#include <QPainter>

using glimpso::Annotation;
using glimpso::AnnotationLayers;

namespace {

constexpr QSize viewSize(400, 200);

// A textured picture, so that blocks and strokes show.
QImage frozen()
{
    QImage image(viewSize, QImage::Format_RGB32);
    for (int y = 0; y < viewSize.height(); ++y)
        for (int x = 0; x < viewSize.width(); ++x)
            image.setPixel(x, y, qRgb((x * 7) % 256, (y * 5) % 256, (x * 3 + y) % 256));
    return image;
}

// Layers over the picture, recording what they ask to repaint.
struct Layers {
    Layers()
        : image(frozen()),
          layers(image, viewSize, [this](QPainter &painter, const QRect &area) { painter.drawImage(area, image, area); },
                 [this](const QRegion &area) { damage += area; })
    {
    }

    // What the view shows in `region` painted over `canvas`.
    void paintInto(QImage &canvas, const QRegion &region)
    {
        QPainter painter(&canvas);
        layers.paintMarks(painter, region);
        painter.setClipRegion(region);
        layers.paintEditing(painter);
    }
    QImage paint()
    {
        QImage canvas(viewSize, QImage::Format_RGB32);
        canvas.fill(Qt::black);
        paintInto(canvas, QRect(QPoint(0, 0), viewSize));
        return canvas;
    }

    QImage image;
    QRegion damage;
    AnnotationLayers layers;
};

qint64 areaOf(const QRegion &region)
{
    qint64 area = 0;
    for (const QRect &rect : region)
        area += qint64(rect.width()) * rect.height();
    return area;
}

QPainterPath polyline(int points)
{
    QPainterPath path(QPointF(10, 100));
    for (int i = 1; i < points; ++i)
        path.lineTo(10 + i * 3.7, 100 + 60 * std::sin(i / 9.0));
    return path;
}

const QPen pencil(QColor(255, 59, 48), 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);

QList<Annotation> someMarks()
{
    return {
        Annotation::rect(QRectF(20, 20, 80, 60), QColor(255, 59, 48), 4),
        Annotation::highlight({QPointF(150, 40), QPointF(350, 40)}, Annotation::highlightYellow(), 18),
        Annotation::arrow(QPointF(250, 180), QPointF(380, 120), QColor(0, 122, 255), 3),
    };
}

} // namespace

TEST(AnnotationLayers, TheReadoutSitsCentredAboveThePointerAndInsideTheDisplay)
{
    const QRectF display(0, 0, 400, 300);
    // 50 by 15 of text: a badge of 74 by 27.
    EXPECT_EQ(AnnotationLayers::hudFrame({50, 15}, {100, 100}, display), QRectF(63, 51, 74, 27));
    EXPECT_EQ(AnnotationLayers::hudFrame({50, 15}, {10, 100}, display).x(), 8);
    EXPECT_EQ(AnnotationLayers::hudFrame({50, 15}, {395, 100}, display).x(), 400 - 74 - 8);
    // Never closer than 8 to the bottom edge.
    EXPECT_EQ(AnnotationLayers::hudFrame({50, 15}, {100, 330}, display).bottom(), 292);
}

TEST(AnnotationLayers, ANewReadoutWithinItsHoldKeepsFullOpacityAndWaitsAgain)
{
    Layers h;
    h.layers.showHUD(QStringLiteral("Width 4pt"), {100, 100}, QRectF(0, 0, 400, 200));
    ASSERT_TRUE(processEventsUntil([&] { return h.layers.hudHoldRemainingMs() < AnnotationLayers::hudHoldMs - 300; }));
    h.layers.showHUD(QStringLiteral("Width 5pt"), {100, 100}, QRectF(0, 0, 400, 200));
    EXPECT_EQ(h.layers.hudOpacity(), 1.0);
    EXPECT_GT(h.layers.hudHoldRemainingMs(), AnnotationLayers::hudHoldMs - 100);
    EXPECT_EQ(h.layers.hudText(), QStringLiteral("Width 5pt"));

    // Then it fades and goes, and its place is repainted.
    const QRectF shown = *h.layers.hudShownFrame();
    h.damage = QRegion();
    ASSERT_TRUE(processEventsUntil([&] { return !h.layers.hudVisible(); }, 5000));
    EXPECT_EQ(h.layers.hudOpacity(), 0.0);
    EXPECT_TRUE(h.damage.contains(shown.toAlignedRect()));
}

TEST(AnnotationLayers, TheReadoutShowsOnlyOnTheDisplayNearThePointer)
{
    Layers h;
    h.layers.showHUD(QStringLiteral("Width 4pt"), {100, 100}, QRectF(0, 0, 400, 200));
    EXPECT_TRUE(h.layers.hudVisible());
    h.layers.showHUD(QStringLiteral("Width 5pt"), {100, 100}, std::nullopt);
    EXPECT_FALSE(h.layers.hudVisible());
}

TEST(AnnotationLayers, DrawingAStrokeNeverRedrawsTheCommittedMarks)
{
    Layers h;
    h.layers.setAnnotations(someMarks());
    QImage canvas = h.paint();
    const int drawn = h.layers.marksDrawn();
    EXPECT_EQ(drawn, 3);
    EXPECT_TRUE(h.layers.hasCache());

    for (int points = 2; points < 100; ++points) {
        h.damage = QRegion();
        h.layers.setPreview(polyline(points), pencil, Qt::NoBrush);
        h.paintInto(canvas, h.damage);
    }
    EXPECT_EQ(h.layers.marksDrawn(), drawn);
}

TEST(AnnotationLayers, AGrowingStrokeRepaintsOnlyItsNewEnd)
{
    Layers h;
    h.layers.setPreview(polyline(90), pencil, Qt::NoBrush);
    h.damage = QRegion();
    h.layers.setPreview(polyline(91), pencil, Qt::NoBrush);
    // One segment of under 4 points plus the pen: far less than the stroke's 330-point span.
    EXPECT_GT(areaOf(h.damage), 0);
    EXPECT_LT(areaOf(h.damage), 20 * 20);
}

TEST(AnnotationLayers, AStrokeRepaintedInPiecesIsTheStrokeDrawnWhole)
{
    Layers whole, pieces;
    QPen ink = pencil;
    ink.setColor(QColor(255, 200, 0, 128)); // translucent: no build-up where pieces meet
    whole.layers.setPreview(polyline(100), ink, Qt::NoBrush);
    pieces.layers.setPreview(polyline(100), ink, Qt::NoBrush);
    const QImage expected = whole.paint();
    QImage canvas(viewSize, QImage::Format_RGB32);
    canvas.fill(Qt::black);
    for (int x = 0; x < viewSize.width(); x += 37)
        pieces.paintInto(canvas, QRect(x, 0, 37, viewSize.height()));
    EXPECT_EQ(canvas, expected);
}

TEST(AnnotationLayers, TheCacheFilledPieceByPieceShowsWhatAWholePaintShows)
{
    Layers whole, pieces;
    whole.layers.setAnnotations(someMarks());
    pieces.layers.setAnnotations(someMarks());
    const QImage expected = whole.paint();
    QImage canvas(viewSize, QImage::Format_RGB32);
    canvas.fill(Qt::black);
    for (int y = 0; y < viewSize.height(); y += 23)
        pieces.paintInto(canvas, QRect(0, y, viewSize.width(), 23));
    EXPECT_EQ(canvas, expected);
}

TEST(AnnotationLayers, ChangingOneMarkRepaintsOnlyThatMark)
{
    Layers h;
    QList<Annotation> marks = someMarks();
    h.layers.setAnnotations(marks);
    h.paint();
    h.damage = QRegion();
    marks[0] = marks[0].translated({5, 5});
    h.layers.setAnnotations(marks);
    EXPECT_TRUE(h.damage.boundingRect().contains(QRect(20, 20, 85, 65)));
    EXPECT_FALSE(h.damage.intersects(QRect(150, 30, 200, 20)));
    const int before = h.layers.marksDrawn();
    QImage canvas = h.paint();
    // The whole view was already cached but where the mark moved.
    EXPECT_EQ(h.layers.marksDrawn() - before, 1);
}

TEST(AnnotationLayers, WithoutMarksNoCacheIsKept)
{
    Layers h;
    h.layers.setAnnotations(someMarks());
    h.paint();
    EXPECT_TRUE(h.layers.hasCache());
    h.layers.setAnnotations({});
    const QImage shown = h.paint();
    EXPECT_FALSE(h.layers.hasCache());
    EXPECT_EQ(shown, h.image);
}

TEST(AnnotationLayers, ABlockSizeUsedBeforeIsNotPixellatedAgain)
{
    Layers h;
    h.layers.setAnnotations({Annotation::mosaic(QRectF(20, 20, 100, 80), 16)});
    h.paint();
    EXPECT_EQ(h.layers.pixellations(), 1);
    h.layers.setAnnotations({Annotation::mosaic(QRectF(20, 20, 100, 80), 32)});
    h.paint();
    EXPECT_EQ(h.layers.pixellations(), 2);
    h.layers.setAnnotations({Annotation::mosaic(QRectF(40, 20, 100, 80), 16)});
    h.paint();
    EXPECT_EQ(h.layers.pixellations(), 2);
}

TEST(AnnotationLayers, AMosaicWhollyOutsideThePictureShowsNothing)
{
    Layers h;
    h.layers.setAnnotations({Annotation::mosaic(QRectF(-300, -200, 100, 80), 16)});
    EXPECT_EQ(h.paint(), h.image);
}

TEST(AnnotationLayers, MovingAMosaicKeepsItsBlocksFixedToThePicture)
{
    Layers here, moved;
    here.layers.setAnnotations({Annotation::mosaic(QRectF(40, 40, 160, 100), 16)});
    moved.layers.setAnnotations({Annotation::mosaic(QRectF(53, 47, 160, 100), 16)});
    const QImage a = here.paint(), b = moved.paint();
    // Where both frames lie, both show the same blocks: only the window moved.
    int compared = 0, pixellated = 0;
    for (int y = 48; y < 139; ++y) {
        for (int x = 54; x < 199; ++x) {
            ++compared;
            EXPECT_EQ(a.pixel(x, y), b.pixel(x, y)) << x << "," << y;
            if (a.pixel(x, y) != here.image.pixel(x, y))
                ++pixellated;
        }
    }
    EXPECT_GT(pixellated, compared / 2);
}

TEST(AnnotationLayers, AMosaicBeingDraggedShowsTheBlocksItWillKeep)
{
    Layers dragging, placed;
    const QRectF frame(40, 40, 160, 100);
    dragging.layers.setMosaicPreview(frame, 16);
    placed.layers.setAnnotations({Annotation::mosaic(frame, 16)});
    EXPECT_EQ(dragging.paint(), placed.paint());
    EXPECT_NE(placed.paint(), placed.image);
    // Gone with the drag.
    dragging.layers.setMosaicPreview(std::nullopt, 16);
    EXPECT_EQ(dragging.paint(), dragging.image);
}
