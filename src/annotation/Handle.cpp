#include "annotation/Handle.h"

namespace glimpso::Handles {

QPointF anchor(Handle handle, const QRectF &rect)
{
    const double minX = rect.left(), maxX = rect.right(), midX = rect.center().x();
    const double minY = rect.top(), maxY = rect.bottom(), midY = rect.center().y();
    switch (handle) {
    case Handle::topLeft: return {minX, maxY};
    case Handle::top: return {midX, maxY};
    case Handle::topRight: return {maxX, maxY};
    case Handle::right: return {maxX, midY};
    case Handle::bottomRight: return {maxX, minY};
    case Handle::bottom: return {midX, minY};
    case Handle::bottomLeft: return {minX, minY};
    case Handle::left: return {minX, midY};
    }
    return rect.center();
}

QRectF box(Handle handle, const QRectF &rect, double side)
{
    const QPointF centre = anchor(handle, rect);
    return {centre.x() - side / 2, centre.y() - side / 2, side, side};
}

Qt::CursorShape cursor(Handle handle)
{
    switch (handle) {
    case Handle::topLeft:
    case Handle::bottomRight: return Qt::SizeFDiagCursor;
    case Handle::topRight:
    case Handle::bottomLeft: return Qt::SizeBDiagCursor;
    case Handle::top:
    case Handle::bottom: return Qt::SizeVerCursor;
    case Handle::right:
    case Handle::left: return Qt::SizeHorCursor;
    }
    return Qt::ArrowCursor;
}

RectEdges movedEdges(Handle handle, const QRectF &start, QPointF travel)
{
    RectEdges edges{start.left(), start.right(), start.top(), start.bottom()};
    const bool movesMinX = handle == Handle::topLeft || handle == Handle::left || handle == Handle::bottomLeft;
    const bool movesMaxX = handle == Handle::topRight || handle == Handle::right || handle == Handle::bottomRight;
    const bool movesMinY = handle == Handle::bottomLeft || handle == Handle::bottom || handle == Handle::bottomRight;
    const bool movesMaxY = handle == Handle::topLeft || handle == Handle::top || handle == Handle::topRight;
    if (movesMinX)
        edges.minX += travel.x();
    if (movesMaxX)
        edges.maxX += travel.x();
    if (movesMinY)
        edges.minY += travel.y();
    if (movesMaxY)
        edges.maxY += travel.y();
    return edges;
}

} // namespace glimpso::Handles
