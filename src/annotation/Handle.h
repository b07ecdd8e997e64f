#pragma once

#include <QPointF>
#include <QRectF>
#include <Qt>

#include <array>

namespace glimpso {

// The eight grips of a rectangle, in the fixed order of every scan over them
// (the stored raw value is the position in this list). Rectangles here are in
// y-up points: a QRectF's top() is the smallest y, so the visual top edge is
// bottom().
enum class Handle { topLeft, top, topRight, right, bottomRight, bottom, bottomLeft, left };

inline constexpr std::array<Handle, 8> allHandles{
    Handle::topLeft,     Handle::top,    Handle::topRight,   Handle::right,
    Handle::bottomRight, Handle::bottom, Handle::bottomLeft, Handle::left,
};

// The four edges of a rectangle in y-up terms; may describe a rectangle of
// negative width or height while a drag crosses the opposite edge.
struct Edges {
    qreal minX = 0;
    qreal maxX = 0;
    qreal minY = 0;
    qreal maxY = 0;

    static Edges of(const QRectF &rect);
};

// Where the handle sits on `rect`.
QPointF anchor(Handle handle, const QRectF &rect);
// The square of side `side` centred on the anchor.
QRectF hitBox(Handle handle, const QRectF &rect, qreal side);
// The resize cursor shown over the handle.
Qt::CursorShape cursor(Handle handle);
// The edges after dragging `handle` of `start` by (dx, dy): each edge the
// handle touches moves with the pointer, the others stay.
Edges dragEdges(Handle handle, const QRectF &start, qreal dx, qreal dy);

} // namespace glimpso
