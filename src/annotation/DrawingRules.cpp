#include "annotation/DrawingRules.h"

#include "annotation/StrokeGeometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace glimpso::DrawingRules {

namespace {

// The smallest drag that leaves a mark, in points.
constexpr double meaningfulSize = 4;
// Neither side of a mark resized by its box handles gets smaller than this.
constexpr double minimumResizedSide = 8;

struct Meaningful {
    bool operator()(const PolylineStroke &stroke) const { return stroke.points.size() >= 2; }
    bool operator()(const BendableSegment &segment) const
    {
        return StrokeGeometry::length(segment.to - segment.from) >= meaningfulSize;
    }
    bool operator()(const FramedOutline &outline) const { return bigEnough(outline.frame); }
    bool operator()(const Annotation::Mosaic &mosaic) const { return bigEnough(mosaic.frame); }
    bool operator()(const Annotation::Text &text) const { return !text.string.isEmpty(); }
    bool operator()(const Annotation::Sequence &) const { return true; }

    static bool bigEnough(const QRectF &frame)
    {
        return frame.width() >= meaningfulSize && frame.height() >= meaningfulSize;
    }
};

} // namespace

bool constraintHeld(Qt::KeyboardModifiers modifiers)
{
    return modifiers & (Qt::ShiftModifier | Qt::AltModifier);
}

QPointF snappedToEighths(QPointF anchor, QPointF p)
{
    const QPointF d = p - anchor;
    if (d.isNull())
        return p;
    const double r = StrokeGeometry::length(d);
    const double eighth = std::numbers::pi / 4;
    const double t = std::round(std::atan2(d.y(), d.x()) / eighth) * eighth;
    return anchor + r * QPointF(std::cos(t), std::sin(t));
}

QRectF dragFrame(QPointF anchor, QPointF p, bool square)
{
    if (!square) {
        return {std::min(anchor.x(), p.x()), std::min(anchor.y(), p.y()), std::abs(p.x() - anchor.x()),
                std::abs(p.y() - anchor.y())};
    }
    const double side = std::max(std::abs(p.x() - anchor.x()), std::abs(p.y() - anchor.y()));
    const double x = p.x() >= anchor.x() ? anchor.x() : anchor.x() - side;
    const double y = p.y() >= anchor.y() ? anchor.y() : anchor.y() - side;
    return {x, y, side, side};
}

bool isMeaningful(const Annotation &annotation)
{
    return std::visit(Meaningful{}, annotation.value());
}

QRectF resizedBounds(Handle handle, const QRectF &start, QPointF travel)
{
    const Edges edges = dragEdges(handle, start, travel.x(), travel.y());
    return {edges.minX, edges.minY, std::max(std::abs(edges.maxX - edges.minX), minimumResizedSide),
            std::max(std::abs(edges.maxY - edges.minY), minimumResizedSide)};
}

Annotation toImageSpace(const Annotation &annotation, const QRectF &rect)
{
    const double left = rect.left();
    const double top = rect.bottom(); // the y-up maxY
    return annotation.mapped([=](QPointF p) { return QPointF(p.x() - left, top - p.y()); },
                             [=](const QRectF &r) {
                                 return QRectF(r.left() - left, top - r.bottom(), r.width(), r.height());
                             });
}

} // namespace glimpso::DrawingRules
