#include "annotation/StrokeGeometry.h"

#include <QPainterPathStroker>

#include <algorithm>
#include <cmath>
#include <limits>

namespace glimpso::StrokeGeometry {

QPointF controlPoint(QPointF from, QPointF to, QPointF bend)
{
    return 2.0 * bend - (from + to) / 2.0;
}

QPainterPath segmentPath(QPointF from, QPointF to, const std::optional<QPointF> &bend)
{
    QPainterPath path(from);
    if (bend)
        path.quadTo(controlPoint(from, to, *bend), to);
    else
        path.lineTo(to);
    return path;
}

QPainterPath polylinePath(const QList<QPointF> &points)
{
    QPainterPath path;
    if (points.isEmpty())
        return path;
    path.moveTo(points.first());
    for (qsizetype i = 1; i < points.size(); ++i)
        path.lineTo(points[i]);
    return path;
}

QRectF strokedBounds(const QPainterPath &path, double width)
{
    if (path.elementCount() < 2)
        return {};
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    stroker.setMiterLimit(1);
    const QRectF bounds = stroker.createStroke(path).boundingRect();
    if (bounds.width() <= 0 || bounds.height() <= 0)
        return {};
    return bounds;
}

double length(QPointF v)
{
    return std::hypot(v.x(), v.y());
}

double distanceToSegment(QPointF p, QPointF a, QPointF b)
{
    const QPointF d = b - a;
    const double lengthSquared = QPointF::dotProduct(d, d);
    if (lengthSquared == 0)
        return length(p - a);
    const double t = std::clamp(QPointF::dotProduct(p - a, d) / lengthSquared, 0.0, 1.0);
    return length(p - (a + t * d));
}

double distanceToPolyline(QPointF p, const QList<QPointF> &points)
{
    double best = std::numeric_limits<double>::infinity();
    for (qsizetype i = 1; i < points.size(); ++i)
        best = std::min(best, distanceToSegment(p, points[i - 1], points[i]));
    return best;
}

QList<QPointF> segmentPolyline(QPointF from, QPointF to, const std::optional<QPointF> &bend, double tolerance)
{
    if (!bend)
        return {from, to};
    // A chord over a parameter step 1/n strays from a quadratic by at most
    // |from - 2c + to| / (4 n^2); pick n so that stays within the tolerance.
    const QPointF c = controlPoint(from, to, *bend);
    const double curvature = length(from - 2.0 * c + to);
    const double limit = std::max(tolerance, 1e-6);
    const int pieces = std::clamp(static_cast<int>(std::ceil(std::sqrt(curvature / (4 * limit)))), 1, 4096);
    QList<QPointF> points;
    points.reserve(pieces + 1);
    for (int i = 0; i <= pieces; ++i) {
        const double t = double(i) / pieces;
        const double u = 1.0 - t;
        points.append(u * u * from + 2.0 * u * t * c + t * t * to);
    }
    return points;
}

QList<QList<QPointF>> pieces(const QList<QPointF> &points, double maxLength, int maxSegments)
{
    QList<QList<QPointF>> result;
    if (points.size() < 2 || !(maxLength > 0) || maxSegments < 1)
        return result;
    QList<QPointF> piece{points.first()};
    double pieceLength = 0;
    const auto close = [&](QPointF at) {
        result.append(piece);
        piece = {at};
        pieceLength = 0;
    };
    for (qsizetype i = 1; i < points.size(); ++i) {
        QPointF from = piece.last();
        const QPointF to = points[i];
        double remaining = length(to - from);
        // Cut a segment too long for the room left in this piece.
        while (pieceLength + remaining > maxLength) {
            const double room = maxLength - pieceLength;
            const QPointF cut = from + (to - from) * (room / remaining);
            piece.append(cut);
            close(cut);
            from = cut;
            remaining -= room;
        }
        piece.append(to);
        pieceLength += remaining;
        if (piece.size() > maxSegments && i + 1 < points.size())
            close(to);
    }
    if (piece.size() > 1)
        result.append(piece);
    return result;
}

bool ellipseContains(const QRectF &frame, QPointF p)
{
    const double rx = frame.width() / 2.0;
    const double ry = frame.height() / 2.0;
    if (rx <= 0 || ry <= 0)
        return false;
    const QPointF centre = frame.center();
    const double nx = (p.x() - centre.x()) / rx;
    const double ny = (p.y() - centre.y()) / ry;
    return nx * nx + ny * ny <= 1.0;
}

bool rectContains(const QRectF &rect, QPointF p)
{
    if (rect.width() <= 0 || rect.height() <= 0)
        return false;
    return p.x() >= rect.left() && p.x() <= rect.right() && p.y() >= rect.top() && p.y() <= rect.bottom();
}

} // namespace glimpso::StrokeGeometry
