#pragma once

#include <QList>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

#include <optional>

namespace glimpso::StrokeGeometry {

// The quadratic control point of a curve that passes through `bend` at its
// middle: c = 2 bend - (from + to) / 2.
QPointF controlPoint(QPointF from, QPointF to, QPointF bend);

// A straight line, or with a bend the quadratic curve through it.
QPainterPath segmentPath(QPointF from, QPointF to, const std::optional<QPointF> &bend);

// The points drawn, joined by straight lines; empty for an empty list.
QPainterPath polylinePath(const QList<QPointF> &points);

// Bounding box of `path` stroked at `width` with round caps and joins; a null
// rectangle when the stroke has no area (an empty path or a lone point).
QRectF strokedBounds(const QPainterPath &path, double width);

double distanceToSegment(QPointF p, QPointF a, QPointF b);

// Distance from p to the nearest segment of the polyline; infinite when there
// is no segment, as a lone point has no stroke to hit.
double distanceToPolyline(QPointF p, const QList<QPointF> &points);

// The segment or curve as a polyline whose chords stray at most `tolerance`
// from the curve: by default close enough (0.005 point) that distances
// measured to it stand for distances to the curve itself.
QList<QPointF> segmentPolyline(QPointF from, QPointF to, const std::optional<QPointF> &bend,
                               double tolerance = 0.005);

// True when p lies in the ellipse inscribed in `frame`, edge included; an
// ellipse with no area contains nothing.
bool ellipseContains(const QRectF &frame, QPointF p);

// True when p lies in `rect`, edge included; a rectangle with no area (or
// turned inside out by shrinking) contains nothing.
bool rectContains(const QRectF &rect, QPointF p);

double length(QPointF v);

// The polyline cut into consecutive pieces, each at most `maxLength` long and
// of at most `maxSegments` segments; a piece begins where the one before it
// ended. A lone point gives no piece.
QList<QList<QPointF>> pieces(const QList<QPointF> &points, double maxLength, int maxSegments);

} // namespace glimpso::StrokeGeometry
