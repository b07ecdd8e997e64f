#pragma once

#include "annotation/Annotation.h"
#include "annotation/Handle.h"

#include <QPointF>
#include <QRectF>
#include <Qt>

namespace glimpso::DrawingRules {

// Shift or Alt held during a drag: lines snap to 45 degrees, frames become
// squares, pencil strokes straight lines.
bool constraintHeld(Qt::KeyboardModifiers modifiers);

// The point at the same distance from `anchor` as `p`, on the nearest multiple
// of 45 degrees (halfway angles round away from zero). `p` itself when it is
// on the anchor.
QPointF snappedToEighths(QPointF anchor, QPointF p);

// The frame a drag from `anchor` to `p` spans; with `square` a square of the
// larger side, growing from the anchor towards the pointer.
QRectF dragFrame(QPointF anchor, QPointF p, bool square);

// Whether a finished drag is worth keeping: strokes of at least 2 points,
// lines and arrows at least 4 long, frames at least 4 by 4, text with text.
bool isMeaningful(const Annotation &annotation);

// The bounds a mark is resized to while one of its box handles is dragged:
// the handle's edges move with the pointer, the moved minX and minY stay the
// origin, and each side is the distance between its edges, at least 8. Unlike
// the selection this never mirrors: dragging past the opposite edge keeps the
// origin on the dragged one.
QRectF resizedBounds(Handle handle, const QRectF &start, QPointF travel);

// A mark of the y-up editing space, relative to `rect`, in image space: y down
// from rect's top edge, x from its left. Sizes and colours stay.
Annotation toImageSpace(const Annotation &annotation, const QRectF &rect);

} // namespace glimpso::DrawingRules
