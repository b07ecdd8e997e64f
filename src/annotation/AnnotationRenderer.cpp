#include "annotation/AnnotationRenderer.h"

#include "annotation/PixelBlocks.h"
#include "annotation/StrokeGeometry.h"
#include "annotation/TextLook.h"

#include <QColorSpace>
#include <QLoggingCategory>
#include <QPainter>

#include <algorithm>
#include <cmath>

Q_LOGGING_CATEGORY(rendererLog, "glimpso.AnnotationRenderer")

namespace glimpso::AnnotationRenderer {

namespace {

QPen roundPen(const QColor &color, double width)
{
    return QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

void strokeOutline(QPainter &painter, const Annotation &annotation, double width)
{
    painter.setPen(roundPen(annotation.strokeColor(), width));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(annotation.path());
}

// Largest piece of an open stroke, in device pixels and in segments.
constexpr double pieceLengthPixels = 256;
constexpr int pieceSegments = 4;
// How far a drawn curve's chords may stray from it, in device pixels: well
// below what antialiasing can show.
constexpr double curveTolerancePixels = 0.05;

double devicePixelsPerPoint(const QPainter &painter)
{
    return std::max(std::sqrt(std::abs(painter.deviceTransform().determinant())), 1e-6);
}

// Strokes open polylines with round caps and joins. Qt's antialiasing
// rasteriser spends time in proportion to the area an outline spans, so a
// long trace or a long diagonal line stroked as one outline is slow; in short
// pieces it is fast. With an opaque colour the pieces make the very same
// shape: round caps where two pieces meet are exactly round joins. A
// translucent colour would build up where pieces overlap, so it keeps the
// single outline `whole`.
void strokeOpen(QPainter &painter, const QList<QList<QPointF>> &polylines, const QPen &pen, const QPainterPath &whole)
{
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    if (pen.color().alpha() < 255) {
        painter.drawPath(whole);
        return;
    }
    const double maxLength = pieceLengthPixels / devicePixelsPerPoint(painter);
    for (const QList<QPointF> &polyline : polylines) {
        for (const QList<QPointF> &piece : StrokeGeometry::pieces(polyline, maxLength, pieceSegments))
            painter.drawPolyline(piece.constData(), int(piece.size()));
    }
}

void drawPencil(QPainter &painter, const Annotation::Pencil &pencil)
{
    strokeOpen(painter, {pencil.points}, roundPen(pencil.color, pencil.width), pencil.path());
}

QList<QPointF> drawnShaft(const QPainter &painter, const BendableSegment &segment)
{
    return StrokeGeometry::segmentPolyline(segment.from, segment.to, segment.bend,
                                           curveTolerancePixels / devicePixelsPerPoint(painter));
}

void drawLine(QPainter &painter, const Annotation::Line &line)
{
    strokeOpen(painter, {drawnShaft(painter, line)}, roundPen(line.color, line.width), line.shaftPath());
}

// The shaft and the head's two strokes, each with round ends.
void drawArrow(QPainter &painter, const Annotation &annotation, const Annotation::Arrow &arrow)
{
    const auto head = arrow.headEnds();
    strokeOpen(painter, {drawnShaft(painter, arrow), {arrow.to, head[0]}, {arrow.to, head[1]}},
               roundPen(arrow.color, arrow.width), annotation.path());
}

// One stroke is filled as one outline, so where a highlight crosses itself the
// colour is laid once; separate highlights still multiply with each other.
void drawHighlight(QPainter &painter, const Annotation::Highlight &highlight)
{
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Multiply);
    painter.setPen(QPen(highlight.color, highlight.width, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(highlight.path());
    painter.restore();
}

void drawText(QPainter &painter, const Annotation::Text &text)
{
    const QSizeF size = TextLook::boxSize(text.string, text.options);
    TextLook::draw(painter, text.string, text.options, text.color, QRectF(text.origin, size));
}

void drawSequence(QPainter &painter, const Annotation::Sequence &bubble)
{
    painter.save();
    painter.setPen(QPen(Qt::white, 1.5));
    painter.setBrush(bubble.color);
    painter.drawEllipse(bubble.center, bubble.radius, bubble.radius);
    TextLook::drawCentered(painter, QString::number(bubble.number), TextLook::numberFont(bubble.radius * 1.1),
                           Qt::white, bubble.center);
    painter.restore();
}

QString describe(const QRectF &rect)
{
    return QStringLiteral("(%1, %2, %3, %4)").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

// The pixellated picture shows through the mosaic's frame laid upside down
// over the image (its top row at the image's bottom), so what shows through
// comes from the vertically mirrored place. That is how saved mosaics look;
// the grid, anchored at the centre, stays aligned under the mirror. Only the
// blocks under the frame are ever averaged.
void drawMosaic(QPainter &painter, const Annotation::Mosaic &mosaic, PixelBlocks *blocks, double scale)
{
    if (!blocks || !blocks->isValid()) {
        qCCritical(rendererLog) << "mosaic skipped — pixellate image missing";
        return;
    }
    qCInfo(rendererLog).noquote() << "mosaic rect=" + describe(mosaic.frame);
    const QRectF framePixels(mosaic.frame.topLeft() * scale, mosaic.frame.size() * scale);
    const QRect area = framePixels.toAlignedRect().intersected(QRect(QPoint(0, 0), blocks->imageSize()));
    const QImage patch = blocks->mirroredPatch(area);
    if (patch.isNull())
        return;
    painter.save();
    painter.setClipRect(mosaic.frame);
    // Pixels onto pixels: the clip stays where it was set, in points.
    painter.resetTransform();
    painter.drawImage(area.topLeft(), patch);
    painter.restore();
}

double largestMosaicBlock(const QList<Annotation> &annotations)
{
    double largest = 0;
    for (const Annotation &annotation : annotations) {
        if (const auto *mosaic = annotation.as<Annotation::Mosaic>())
            largest = std::max(largest, mosaic->blockSize);
    }
    return largest;
}

bool hasMosaic(const QList<Annotation> &annotations)
{
    return std::any_of(annotations.begin(), annotations.end(),
                       [](const Annotation &annotation) { return annotation.is<Annotation::Mosaic>(); });
}

} // namespace

std::optional<QImage> pixellate(const QImage &image, double blockSizePixels)
{
    PixelBlocks blocks(image, blockSizePixels);
    QImage result = blocks.pixellated();
    if (result.isNull()) {
        qCCritical(rendererLog) << "pixellate produced no output";
        return std::nullopt;
    }
    qCInfo(rendererLog, "pixellate built image=%d block=%f size=%dx%d", 1, blockSizePixels, result.width(),
           result.height());
    return result;
}

void drawMark(QPainter &painter, const Annotation &annotation)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (const auto *highlight = annotation.as<Annotation::Highlight>())
        drawHighlight(painter, *highlight);
    else if (const auto *text = annotation.as<Annotation::Text>())
        drawText(painter, *text);
    else if (const auto *bubble = annotation.as<Annotation::Sequence>())
        drawSequence(painter, *bubble);
    else if (const auto *pencil = annotation.as<Annotation::Pencil>())
        drawPencil(painter, *pencil);
    else if (const auto *line = annotation.as<Annotation::Line>())
        drawLine(painter, *line);
    else if (const auto *arrow = annotation.as<Annotation::Arrow>())
        drawArrow(painter, annotation, *arrow);
    else if (const auto *rect = annotation.as<Annotation::Rect>())
        strokeOutline(painter, annotation, rect->width);
    else if (const auto *ellipse = annotation.as<Annotation::Ellipse>())
        strokeOutline(painter, annotation, ellipse->width);
    painter.restore();
}

QImage flatten(const QImage &image, const QList<Annotation> &annotations, double scale)
{
    if (annotations.isEmpty() || image.isNull() || !(scale > 0))
        return image;
    QImage canvas = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (canvas.isNull())
        return image;
    if (!canvas.colorSpace().isValid())
        canvas.setColorSpace(QColorSpace::SRgb);

    // One grid for every mosaic of this flatten, with the largest block.
    std::optional<PixelBlocks> blocks;
    if (hasMosaic(annotations)) {
        blocks.emplace(image, largestMosaicBlock(annotations) * scale);
        if (blocks->isValid())
            qCInfo(rendererLog, "pixellate built image=%d block=%f size=%dx%d", 1, blocks->blockSize(),
                   blocks->imageSize().width(), blocks->imageSize().height());
        else
            qCCritical(rendererLog) << "pixellate produced no output";
    }

    QPainter painter;
    if (!painter.begin(&canvas))
        return image;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    for (const Annotation &annotation : annotations) {
        if (const auto *mosaic = annotation.as<Annotation::Mosaic>())
            drawMosaic(painter, *mosaic, blocks ? &*blocks : nullptr, scale);
        else
            drawMark(painter, annotation);
    }
    painter.end();
    return canvas;
}

} // namespace glimpso::AnnotationRenderer
