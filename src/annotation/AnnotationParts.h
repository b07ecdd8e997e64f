#pragma once

#include <QColor>
#include <QList>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

#include <array>
#include <functional>
#include <optional>

namespace glimpso {

using PointMap = std::function<QPointF(QPointF)>;
using RectMap = std::function<QRectF(const QRectF &)>;

// What pencil and highlight share: the points drawn, as given, joined by
// straight lines. No smoothing: the points stored are the points drawn.
struct PolylineStroke {
    QList<QPointF> points;
    QColor color;
    double width = 0;

    QPainterPath path() const;
    QRectF boundingRect() const;
    bool hitTest(QPointF p) const;
    void mapPoints(const PointMap &map);

    bool operator==(const PolylineStroke &) const = default;
};

// What line and arrow share: a two-point drag with an optional bend, a point
// the curve passes through at its middle (not a control point).
struct BendableSegment {
    QPointF from;
    QPointF to;
    QColor color;
    double width = 0;
    std::optional<QPointF> bend;

    QPainterPath shaftPath() const;
    // Bounds of the shaft alone; an arrow's head does not count.
    QRectF boundingRect() const;
    bool hitTest(QPointF p) const;
    // from, the middle (the bend, or the midpoint when straight), to.
    std::array<QPointF, 3> pointHandles() const;
    void moveHandle(int index, QPointF p);
    void mapPoints(const PointMap &map);

    bool operator==(const BendableSegment &) const = default;
};

// What rectangle and ellipse share: an outline on a frame, picked only near
// the outline so that a click in the empty middle reaches what lies below.
struct FramedOutline {
    QRectF frame;
    QColor color;
    double width = 0;

    QRectF boundingRect() const;
    double hitPad() const;

    bool operator==(const FramedOutline &) const = default;
};

} // namespace glimpso
