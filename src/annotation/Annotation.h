#pragma once

#include "annotation/AnnotationParts.h"
#include "annotation/TextOptions.h"

#include <QColor>
#include <QList>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <array>
#include <optional>
#include <type_traits>
#include <variant>

namespace glimpso {

// One mark drawn over a capture: a plain value, changed only by making a new
// one. Its points live in whichever space the holder works in (desktop points
// y up while editing on screen, image points y down once handed to the
// renderer); nothing here depends on which, except the text box, whose origin
// is its top-left corner in the y-up editing space (see boundingRect).
class Annotation {
public:
    struct Pencil : PolylineStroke {};
    struct Highlight : PolylineStroke {};
    struct Line : BendableSegment {};
    struct Arrow : BendableSegment {
        // The two open strokes of the head, both starting at the tip `to`.
        std::array<QPointF, 2> headEnds() const;
    };
    struct Rect : FramedOutline {};
    struct Ellipse : FramedOutline {};
    struct Text {
        QString string;
        QPointF origin;
        TextOptions options;
        QColor color;
        bool operator==(const Text &) const = default;
    };
    struct Sequence {
        int number = 0;
        QPointF center;
        QColor color;
        double radius = 0;
        bool operator==(const Sequence &) const = default;
    };
    struct Mosaic {
        QRectF frame;
        double blockSize = 0;
        bool operator==(const Mosaic &) const = default;
    };

    using Case = std::variant<Pencil, Highlight, Line, Arrow, Rect, Ellipse, Text, Sequence, Mosaic>;

    template <typename C>
        requires std::is_constructible_v<Case, C>
    Annotation(C value)
        : m_case(std::move(value))
    {
    }

    static Annotation pencil(QList<QPointF> points, QColor color, double width);
    static Annotation highlight(QList<QPointF> points, QColor color, double width);
    static Annotation line(QPointF from, QPointF to, QColor color, double width,
                           std::optional<QPointF> bend = std::nullopt);
    static Annotation arrow(QPointF from, QPointF to, QColor color, double width,
                            std::optional<QPointF> bend = std::nullopt);
    static Annotation rect(QRectF frame, QColor color, double width);
    static Annotation ellipse(QRectF frame, QColor color, double width);
    static Annotation text(QString string, QPointF origin, TextOptions options, QColor color);
    static Annotation sequence(int number, QPointF center, QColor color, double radius);
    static Annotation mosaic(QRectF frame, double blockSize);

    // The highlighter's default: a warm yellow at half opacity.
    static QColor highlightYellow();
    // A highlighter's ink: the colour at half opacity.
    static QColor atHalfAlpha(const QColor &color);

    const Case &value() const { return m_case; }
    template <typename C>
    const C *as() const
    {
        return std::get_if<C>(&m_case);
    }
    template <typename C>
    bool is() const
    {
        return std::holds_alternative<C>(m_case);
    }

    // The outline to stroke; empty for text and sequence bubbles.
    QPainterPath path() const;
    // The mark's colour; a mosaic's is a translucent white frame.
    QColor strokeColor() const;
    QRectF boundingRect() const;
    // The picking tolerances of the editor: true when p picks this mark.
    bool hitTest(QPointF p) const;
    // Line and arrow only: from, middle, to. Other marks use the eight box
    // handles on boundingRect() instead.
    std::optional<std::array<QPointF, 3>> pointHandles() const;

    Annotation movingPointHandle(int index, QPointF to) const;
    Annotation translated(QPointF offset) const;
    Annotation resized(const QRectF &to) const;
    Annotation recolored(const QColor &color) const;
    // Every point through `point` and every frame through `rect`; widths,
    // sizes and colours unchanged. Moves marks between coordinate spaces.
    Annotation mapped(const PointMap &point, const RectMap &rect) const;

    bool operator==(const Annotation &) const = default;

private:
    Case m_case;
};

} // namespace glimpso
