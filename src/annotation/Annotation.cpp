#include "annotation/Annotation.h"

#include "annotation/StrokeGeometry.h"
#include "annotation/TextLook.h"

#include <algorithm>
#include <cmath>

namespace glimpso {

namespace {

template <typename... Fs>
struct Overloaded : Fs... {
    using Fs::operator()...;
};
template <typename... Fs>
Overloaded(Fs...) -> Overloaded<Fs...>;

// cos and sin of pi/7: the head's strokes open 2 pi/7 in all.
constexpr double headCos = 0.9009688679024191;
constexpr double headSin = 0.4338837391175581;

// Takes a point to the same fractional place in `to` as it had in `from`; a
// side of length zero maps everything to fraction 0.
PointMap fractionalMap(const QRectF &from, const QRectF &to)
{
    return [from, to](QPointF p) {
        const double fx = from.width() > 0 ? (p.x() - from.left()) / from.width() : 0.0;
        const double fy = from.height() > 0 ? (p.y() - from.top()) / from.height() : 0.0;
        return QPointF(to.left() + fx * to.width(), to.top() + fy * to.height());
    };
}

QRectF textBox(const Annotation::Text &text)
{
    const QSizeF size = TextLook::boxSize(text.string, text.options);
    return {text.origin.x(), text.origin.y() - size.height(), size.width(), size.height()};
}

} // namespace

std::array<QPointF, 2> Annotation::Arrow::headEnds() const
{
    const QPointF base = bend ? StrokeGeometry::controlPoint(from, to, *bend) : from;
    const QPointF d = to - base;
    const QPointF u = d / std::max(StrokeGeometry::length(d), 1.0);
    const double h = std::max(4.0 * width, 12.0);
    return {
        to + h * QPointF(-headCos * u.x() + headSin * u.y(), -headCos * u.y() - headSin * u.x()),
        to + h * QPointF(-headCos * u.x() - headSin * u.y(), -headCos * u.y() + headSin * u.x()),
    };
}

Annotation Annotation::pencil(QList<QPointF> points, QColor color, double width)
{
    return Pencil{{std::move(points), color, width}};
}

Annotation Annotation::highlight(QList<QPointF> points, QColor color, double width)
{
    return Highlight{{std::move(points), color, width}};
}

Annotation Annotation::line(QPointF from, QPointF to, QColor color, double width, std::optional<QPointF> bend)
{
    return Line{{from, to, color, width, bend}};
}

Annotation Annotation::arrow(QPointF from, QPointF to, QColor color, double width, std::optional<QPointF> bend)
{
    return Arrow{{from, to, color, width, bend}};
}

Annotation Annotation::rect(QRectF frame, QColor color, double width)
{
    return Rect{{frame, color, width}};
}

Annotation Annotation::ellipse(QRectF frame, QColor color, double width)
{
    return Ellipse{{frame, color, width}};
}

Annotation Annotation::text(QString string, QPointF origin, TextOptions options, QColor color)
{
    return Text{std::move(string), origin, options, color};
}

Annotation Annotation::sequence(int number, QPointF center, QColor color, double radius)
{
    return Sequence{number, center, color, radius};
}

Annotation Annotation::mosaic(QRectF frame, double blockSize)
{
    return Mosaic{frame, blockSize};
}

QColor Annotation::highlightYellow()
{
    return QColor::fromRgbF(1.0f, 0.84f, 0.04f, 0.5f);
}

QPainterPath Annotation::path() const
{
    return std::visit(
        Overloaded{
            [](const PolylineStroke &stroke) { return stroke.path(); },
            [](const Line &line) { return line.shaftPath(); },
            [](const Arrow &arrow) {
                QPainterPath path = arrow.shaftPath();
                for (QPointF end : arrow.headEnds()) {
                    path.moveTo(arrow.to);
                    path.lineTo(end);
                }
                return path;
            },
            [](const Rect &rect) {
                const QRectF &f = rect.frame;
                const double radius = std::min({2.0, f.width() / 2.0, f.height() / 2.0});
                QPainterPath path;
                path.addRoundedRect(f, radius, radius);
                return path;
            },
            [](const Ellipse &ellipse) {
                QPainterPath path;
                path.addEllipse(ellipse.frame);
                return path;
            },
            [](const Mosaic &mosaic) {
                QPainterPath path;
                path.addRect(mosaic.frame);
                return path;
            },
            [](const Text &) { return QPainterPath(); },
            [](const Sequence &) { return QPainterPath(); },
        },
        m_case);
}

QColor Annotation::strokeColor() const
{
    return std::visit(Overloaded{
                          [](const Mosaic &) { return QColor::fromRgbF(1, 1, 1, 0.6f); },
                          [](const auto &mark) { return mark.color; },
                      },
                      m_case);
}

QRectF Annotation::boundingRect() const
{
    return std::visit(Overloaded{
                          [](const PolylineStroke &stroke) { return stroke.boundingRect(); },
                          [](const BendableSegment &segment) { return segment.boundingRect(); },
                          [](const FramedOutline &outline) { return outline.boundingRect(); },
                          [](const Text &text) { return textBox(text); },
                          [](const Sequence &bubble) {
                              const QPointF corner(bubble.radius, bubble.radius);
                              return QRectF(bubble.center - corner, bubble.center + corner);
                          },
                          [](const Mosaic &mosaic) { return mosaic.frame; },
                      },
                      m_case);
}

bool Annotation::hitTest(QPointF p) const
{
    using StrokeGeometry::ellipseContains;
    using StrokeGeometry::rectContains;
    return std::visit(
        Overloaded{
            [p](const PolylineStroke &stroke) { return stroke.hitTest(p); },
            [p](const BendableSegment &segment) { return segment.hitTest(p); },
            [p](const Rect &rect) {
                const double pad = rect.hitPad();
                return rectContains(rect.frame.adjusted(-pad, -pad, pad, pad), p)
                       && !rectContains(rect.frame.adjusted(pad, pad, -pad, -pad), p);
            },
            [p](const Ellipse &ellipse) {
                const double pad = ellipse.hitPad();
                return ellipseContains(ellipse.frame.adjusted(-pad, -pad, pad, pad), p)
                       && !ellipseContains(ellipse.frame.adjusted(pad, pad, -pad, -pad), p);
            },
            [p](const Text &text) { return rectContains(textBox(text).adjusted(-4, -2, 4, 2), p); },
            [p](const Sequence &bubble) { return StrokeGeometry::length(p - bubble.center) <= bubble.radius; },
            [p](const Mosaic &mosaic) { return rectContains(mosaic.frame, p); },
        },
        m_case);
}

std::optional<std::array<QPointF, 3>> Annotation::pointHandles() const
{
    if (const auto *segment = std::get_if<Line>(&m_case))
        return segment->pointHandles();
    if (const auto *segment = std::get_if<Arrow>(&m_case))
        return segment->pointHandles();
    return std::nullopt;
}

Annotation Annotation::movingPointHandle(int index, QPointF to) const
{
    Annotation moved = *this;
    if (auto *line = std::get_if<Line>(&moved.m_case))
        line->moveHandle(index, to);
    else if (auto *arrow = std::get_if<Arrow>(&moved.m_case))
        arrow->moveHandle(index, to);
    return moved;
}

Annotation Annotation::translated(QPointF offset) const
{
    return mapped([offset](QPointF p) { return p + offset; },
                  [offset](const QRectF &r) { return r.translated(offset); });
}

Annotation Annotation::mapped(const PointMap &point, const RectMap &rect) const
{
    Annotation result = *this;
    std::visit(Overloaded{
                   [&](PolylineStroke &stroke) { stroke.mapPoints(point); },
                   [&](BendableSegment &segment) { segment.mapPoints(point); },
                   [&](FramedOutline &outline) { outline.frame = rect(outline.frame); },
                   [&](Text &text) { text.origin = point(text.origin); },
                   [&](Sequence &bubble) { bubble.center = point(bubble.center); },
                   [&](Mosaic &mosaic) { mosaic.frame = rect(mosaic.frame); },
               },
               result.m_case);
    return result;
}

Annotation Annotation::resized(const QRectF &to) const
{
    const QRectF bounds = boundingRect();
    const PointMap map = fractionalMap(bounds, to);
    Annotation result = *this;
    std::visit(Overloaded{
                   [&](PolylineStroke &stroke) { stroke.mapPoints(map); },
                   [&](BendableSegment &segment) { segment.mapPoints(map); },
                   // The frame becomes the handles' rectangle as it stands, stroke
                   // margin included: a first resize grows it by half a stroke a side.
                   [&](FramedOutline &outline) { outline.frame = to; },
                   [&](Mosaic &mosaic) { mosaic.frame = to; },
                   [&](Text &text) {
                       const double k = bounds.height() > 0 ? to.height() / bounds.height() : 1.0;
                       text.origin = map(text.origin);
                       text.options.size = std::max(text.options.size * k, 8.0);
                   },
                   [&](Sequence &bubble) {
                       const double k = std::min(to.width(), to.height())
                                        / std::max(std::min(bounds.width(), bounds.height()), 1.0);
                       bubble.center = map(bubble.center);
                       bubble.radius = std::max(bubble.radius * k, 6.0);
                   },
               },
               result.m_case);
    return result;
}

Annotation Annotation::recolored(const QColor &color) const
{
    Annotation result = *this;
    std::visit(Overloaded{
                   [&](Highlight &highlight) { highlight.color = Annotation::atHalfAlpha(color); },
                   [](Mosaic &) {},
                   [&](auto &mark) { mark.color = color; },
               },
               result.m_case);
    return result;
}

QColor Annotation::atHalfAlpha(const QColor &color)
{
    if (!color.isValid())
        return color;
    QColor copy = color;
    copy.setAlphaF(0.5);
    return copy;
}

} // namespace glimpso
