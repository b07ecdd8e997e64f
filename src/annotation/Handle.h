#pragma once

#include <QPointF>
#include <QRectF>
#include <Qt>

#include <array>

namespace glimpso {

// The eight grips on a rectangle, in the fixed order of every scan over them
// (raw values 0 to 7). Rectangles here are in the y-up desktop space: "top"
// is the larger y, the rectangle's maxY (QRectF::bottom()).
enum class Handle {
    topLeft,
    top,
    topRight,
    right,
    bottomRight,
    bottom,
    bottomLeft,
    left,
};

inline constexpr std::array<Handle, 8> allHandles{
    Handle::topLeft,     Handle::top,    Handle::topRight,   Handle::right,
    Handle::bottomRight, Handle::bottom, Handle::bottomLeft, Handle::left,
};

// The four edges of a rectangle by name, so that a handle drag can move them
// past each other before anyone decides how to turn them back into a rectangle.
struct RectEdges {
    double minX = 0;
    double maxX = 0;
    double minY = 0;
    double maxY = 0;
};

namespace Handles {

// Where the handle sits on `rect`: topLeft is (minX, maxY), top (midX, maxY), ...
QPointF anchor(Handle handle, const QRectF &rect);
// A square of `side` centred on the anchor: the handle's hit box.
QRectF box(Handle handle, const QRectF &rect, double side);
// The resize cursor shown over the handle.
Qt::CursorShape cursor(Handle handle);
// The edges of `start` after the handle travelled by `travel`: minX moves for
// the left-hand handles, maxX for the right-hand ones, minY for the bottom
// ones and maxY for the top ones. Edges may cross; callers decide what that means.
RectEdges movedEdges(Handle handle, const QRectF &start, QPointF travel);

} // namespace Handles

} // namespace glimpso
