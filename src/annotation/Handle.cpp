#include "annotation/Handle.h"

namespace glimpso {

Edges Edges::of(const QRectF &rect)
{
    const QRectF r = rect.normalized();
    return {r.left(), r.right(), r.top(), r.bottom()};
}

QPointF anchor(Handle handle, const QRectF &rect)
{
    const Edges e = Edges::of(rect);
    const qreal midX = (e.minX + e.maxX) / 2;
    const qreal midY = (e.minY + e.maxY) / 2;
    switch (handle) {
    case Handle::topLeft: return {e.minX, e.maxY};
    case Handle::top: return {midX, e.maxY};
    case Handle::topRight: return {e.maxX, e.maxY};
    case Handle::right: return {e.maxX, midY};
    case Handle::bottomRight: return {e.maxX, e.minY};
    case Handle::bottom: return {midX, e.minY};
    case Handle::bottomLeft: return {e.minX, e.minY};
    case Handle::left: return {e.minX, midY};
    }
    return {};
}

QRectF hitBox(Handle handle, const QRectF &rect, qreal side)
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

Edges dragEdges(Handle handle, const QRectF &start, qreal dx, qreal dy)
{
    Edges e = Edges::of(start);
    switch (handle) {
    case Handle::topLeft: e.minX += dx; e.maxY += dy; break;
    case Handle::top: e.maxY += dy; break;
    case Handle::topRight: e.maxX += dx; e.maxY += dy; break;
    case Handle::right: e.maxX += dx; break;
    case Handle::bottomRight: e.maxX += dx; e.minY += dy; break;
    case Handle::bottom: e.minY += dy; break;
    case Handle::bottomLeft: e.minX += dx; e.minY += dy; break;
    case Handle::left: e.minX += dx; break;
    }
    return e;
}

} // namespace glimpso
