#include "annotation/AnnotationRenderer.h"

#include "annotation/TextLook.h"

#include <QColorSpace>
#include <QLoggingCategory>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

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
// comes from the vertically mirrored place. That is the output as defined;
// the grid, anchored at the centre, stays aligned under the mirror.
void drawMosaic(QPainter &painter, const Annotation::Mosaic &mosaic, const std::optional<QImage> &pixellated,
                QSizeF imagePoints)
{
    if (!pixellated) {
        qCCritical(rendererLog) << "mosaic skipped — pixellate image missing";
        return;
    }
    qCInfo(rendererLog).noquote() << "mosaic rect=" + describe(mosaic.frame);
    painter.save();
    painter.setClipRect(mosaic.frame);
    painter.translate(0, imagePoints.height());
    painter.scale(1, -1);
    painter.drawImage(QRectF(QPointF(0, 0), imagePoints), *pixellated);
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

// Index of the block each pixel's centre falls in, counted from the first
// block that reaches into the image; edges lie at centre + k * block.
std::vector<int> blockIndices(int pixels, double blockSize)
{
    const double centre = pixels / 2.0;
    std::vector<int> indices(pixels);
    const int first = static_cast<int>(std::floor((0.5 - centre) / blockSize));
    for (int i = 0; i < pixels; ++i)
        indices[i] = static_cast<int>(std::floor((i + 0.5 - centre) / blockSize)) - first;
    return indices;
}

// Averages the premultiplied pixels of rows [top, bottom) per block column and
// writes each block's average back over those rows.
void pixellateBand(const QImage &source, QImage &target, int top, int bottom, const std::vector<int> &columns,
                   std::vector<quint64> &sums, std::vector<quint32> &counts)
{
    const int width = source.width();
    std::fill(sums.begin(), sums.end(), 0);
    std::fill(counts.begin(), counts.end(), 0);
    for (int y = top; y < bottom; ++y) {
        const auto *row = reinterpret_cast<const quint32 *>(source.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            const quint32 pixel = row[x];
            quint64 *sum = &sums[4 * static_cast<size_t>(columns[x])];
            sum[0] += pixel >> 24;
            sum[1] += (pixel >> 16) & 0xff;
            sum[2] += (pixel >> 8) & 0xff;
            sum[3] += pixel & 0xff;
        }
        for (int x = 0; x < width; ++x)
            ++counts[columns[x]];
    }
    std::vector<quint32> averages(counts.size());
    for (size_t block = 0; block < counts.size(); ++block) {
        const quint64 n = std::max<quint64>(counts[block], 1);
        const quint64 *sum = &sums[4 * block];
        averages[block] = quint32((sum[0] + n / 2) / n) << 24 | quint32((sum[1] + n / 2) / n) << 16
                          | quint32((sum[2] + n / 2) / n) << 8 | quint32((sum[3] + n / 2) / n);
    }
    for (int y = top; y < bottom; ++y) {
        auto *row = reinterpret_cast<quint32 *>(target.scanLine(y));
        for (int x = 0; x < width; ++x)
            row[x] = averages[columns[x]];
    }
}

} // namespace

std::optional<QImage> pixellate(const QImage &image, double blockSizePixels)
{
    if (image.isNull() || !(blockSizePixels > 0)) {
        qCCritical(rendererLog) << "pixellate produced no output";
        return std::nullopt;
    }
    const QImage source = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QImage target(source.size(), QImage::Format_ARGB32_Premultiplied);
    if (target.isNull()) {
        qCCritical(rendererLog) << "pixellate produced no output";
        return std::nullopt;
    }
    target.setColorSpace(source.colorSpace());

    const std::vector<int> columns = blockIndices(source.width(), blockSizePixels);
    const std::vector<int> rows = blockIndices(source.height(), blockSizePixels);
    const size_t blockColumns = static_cast<size_t>(columns.back()) + 1;
    std::vector<quint64> sums(4 * blockColumns);
    std::vector<quint32> counts(blockColumns);
    for (int top = 0; top < source.height();) {
        int bottom = top + 1;
        while (bottom < source.height() && rows[bottom] == rows[top])
            ++bottom;
        pixellateBand(source, target, top, bottom, columns, sums, counts);
        top = bottom;
    }
    qCInfo(rendererLog, "pixellate built image=%d block=%f size=%dx%d", 1, blockSizePixels, target.width(),
           target.height());
    return target;
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
        strokeOutline(painter, annotation, pencil->width);
    else if (const auto *line = annotation.as<Annotation::Line>())
        strokeOutline(painter, annotation, line->width);
    else if (const auto *arrow = annotation.as<Annotation::Arrow>())
        strokeOutline(painter, annotation, arrow->width);
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

    std::optional<QImage> pixellated;
    if (hasMosaic(annotations))
        pixellated = pixellate(image, largestMosaicBlock(annotations) * scale);

    QPainter painter;
    if (!painter.begin(&canvas))
        return image;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    const QSizeF imagePoints(canvas.width() / scale, canvas.height() / scale);
    for (const Annotation &annotation : annotations) {
        if (const auto *mosaic = annotation.as<Annotation::Mosaic>())
            drawMosaic(painter, *mosaic, pixellated, imagePoints);
        else
            drawMark(painter, annotation);
    }
    painter.end();
    return canvas;
}

} // namespace glimpso::AnnotationRenderer
