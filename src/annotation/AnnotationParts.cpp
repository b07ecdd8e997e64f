#include "annotation/AnnotationParts.h"

#include "annotation/StrokeGeometry.h"

#include <algorithm>
#include <cmath>

namespace glimpso {

namespace {

// A bend closer than this to the straight line snaps the line straight.
constexpr double bendSnapDistance = 3.0;

} // namespace

QPainterPath PolylineStroke::path() const
{
    return StrokeGeometry::polylinePath(points);
}

QRectF PolylineStroke::boundingRect() const
{
    return StrokeGeometry::strokedBounds(path(), std::max(width, 4.0));
}

bool PolylineStroke::hitTest(QPointF p) const
{
    const double stroke = std::max(width + 8.0, 12.0);
    return StrokeGeometry::distanceToPolyline(p, points) <= stroke / 2.0;
}

void PolylineStroke::mapPoints(const PointMap &map)
{
    for (QPointF &point : points)
        point = map(point);
}

QPainterPath BendableSegment::shaftPath() const
{
    return StrokeGeometry::segmentPath(from, to, bend);
}

QRectF BendableSegment::boundingRect() const
{
    return StrokeGeometry::strokedBounds(shaftPath(), std::max(width, 4.0));
}

bool BendableSegment::hitTest(QPointF p) const
{
    const double stroke = std::max(width + 10.0, 14.0);
    return StrokeGeometry::distanceToPolyline(p, StrokeGeometry::segmentPolyline(from, to, bend)) <= stroke / 2.0;
}

std::array<QPointF, 3> BendableSegment::pointHandles() const
{
    return {from, bend.value_or((from + to) / 2.0), to};
}

void BendableSegment::moveHandle(int index, QPointF p)
{
    if (index == 0) {
        from = p;
        return;
    }
    if (index == 2) {
        to = p;
        return;
    }
    const QPointF d = to - from;
    const double l = StrokeGeometry::length(d);
    if (l == 0) {
        bend.reset();
        return;
    }
    const double offLine =
        std::abs(d.y() * p.x() - d.x() * p.y() + from.y() * to.x() - from.x() * to.y()) / l;
    if (offLine < bendSnapDistance)
        bend.reset();
    else
        bend = p;
}

void BendableSegment::mapPoints(const PointMap &map)
{
    from = map(from);
    to = map(to);
    if (bend)
        bend = map(*bend);
}

QRectF FramedOutline::boundingRect() const
{
    const double half = width / 2.0;
    return frame.adjusted(-half, -half, half, half);
}

double FramedOutline::hitPad() const
{
    return std::max(width / 2.0 + 6.0, 8.0);
}

} // namespace glimpso
