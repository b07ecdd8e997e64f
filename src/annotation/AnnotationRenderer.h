#pragma once

#include "annotation/Annotation.h"

#include <QImage>
#include <QList>

#include <optional>

class QPainter;

// Bakes annotations into a capture: the moment an annotated capture becomes a
// flat picture for copying, saving or uploading. Stateless.
namespace glimpso::AnnotationRenderer {

// Draws `annotations` (image points, y down, origin top left; list order is
// draw order) over `image`, which has `scale` pixels per point. Never fails:
// with nothing to draw, or when no canvas can be had, the input itself comes
// back untouched. All mosaics share one pixellation with the largest block.
QImage flatten(const QImage &image, const QList<Annotation> &annotations, double scale);

// The image cut into square blocks of `blockSizePixels`, each one colour (the
// average of the pixels it covers). The grid is anchored at the image's
// centre, so it never depends on where a mosaic lies. Absent when there is
// nothing to pixellate.
std::optional<QImage> pixellate(const QImage &image, double blockSizePixels);

// Draws one annotation other than a mosaic with `painter` speaking annotation
// points, y down: the strokes, the highlighter's multiply, text and bubbles.
// The live view paints with the same routine. Mosaics are drawn by flatten.
void drawMark(QPainter &painter, const Annotation &annotation);

} // namespace glimpso::AnnotationRenderer
