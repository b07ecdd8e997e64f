#pragma once

#include <QColor>
#include <QPointer>
#include <QRectF>
#include <QRegion>
#include <QWidget>

#include <array>
#include <functional>
#include <optional>

// The frame around the text field while a text is typed: it follows the
// field, and its parts move the text (the two side grips and the frame line),
// size it (the square at the bottom right corner) and open the emoji picker
// (the round button above). Everywhere else it lets the pointer through, so a
// click inside the frame reaches the field and a click outside reaches the
// canvas. Coordinates are the box's own, y down.
class TextEditBox : public QWidget
{
    Q_OBJECT

public:
    enum class Part { move, resize, emoji };

    // Margins around the field: 12 on the sides and below, 38 above for the button.
    static constexpr qreal sideMargin = 12;
    static constexpr qreal topMargin = 38;

    // Made beside `field`, in the same parent and just below it.
    TextEditBox(QWidget *field, const QColor &accent);

    // The travel of a move drag since its last step, in the parent's coordinates.
    std::function<void(QPointF travel)> onMove;
    std::function<void()> onResizeBegin;
    // The travel of a resize drag since its press (right and down are
    // positive) and where the pointer is, in the parent's coordinates.
    std::function<void(QSizeF travel, QPointF pointer)> onResize;
    std::function<void()> onEmoji;

    // Takes the field's frame again.
    void follow();
    std::optional<Part> dragging() const { return m_dragging; }

    // The geometry, for a box of `size`.
    static QRectF boxFrame(const QRectF &fieldFrame);
    // The frame line drawn around the text: the field's frame grown by 6 and 3.
    static QRectF textFrame(QSizeF size);
    static QRectF emojiButton(QSizeF size);
    static QRectF resizeSquare(QSizeF size);
    static std::array<QPointF, 2> sideGrips(QSizeF size);
    // What a press at `p` takes hold of, in the order emoji, resize square,
    // side grips, frame line; none elsewhere.
    static std::optional<Part> partAt(QPointF p, QSizeF size);
    // Where the box takes the pointer: the union of the parts' areas.
    static QRegion hitRegion(QSizeF size);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void hoverCursor(QPointF p);
    QPointF inParent(QPointF global) const;

    QPointer<QWidget> m_field;
    QColor m_accent;
    std::optional<Part> m_dragging;
    QPointF m_startPoint;
    QPointF m_lastPoint;
};
