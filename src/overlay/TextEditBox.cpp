#include "overlay/TextEditBox.h"

#include "appui/Lucide.h"

#include "annotation/Handle.h"
#include "annotation/TextLook.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace {

constexpr qreal buttonSide = 24;
constexpr qreal buttonGap = 8;
constexpr qreal squareSide = 8;
constexpr qreal gripReach = 9.5;
constexpr qreal gripDiameter = 11;
constexpr qreal gripCursorSide = 19;
constexpr qreal frameBand = 3;
constexpr qreal lineWidth = 1.5;

QRectF around(QPointF centre, qreal side)
{
    return {centre.x() - side / 2, centre.y() - side / 2, side, side};
}

} // namespace

TextEditBox::TextEditBox(QWidget *field, const QColor &accent)
    : QWidget(field->parentWidget()), m_field(field), m_accent(accent)
{
    setMouseTracking(true);
    field->installEventFilter(this);
    follow();
    stackUnder(field);
}

QRectF TextEditBox::boxFrame(const QRectF &fieldFrame)
{
    return fieldFrame.adjusted(-sideMargin, -topMargin, sideMargin, sideMargin);
}

QRectF TextEditBox::textFrame(QSizeF size)
{
    return QRectF(sideMargin, topMargin, size.width() - 2 * sideMargin, size.height() - topMargin - sideMargin)
        .adjusted(-6, -3, 6, 3);
}

QRectF TextEditBox::emojiButton(QSizeF size)
{
    const QRectF frame = textFrame(size);
    return {frame.center().x() - buttonSide / 2, frame.top() - buttonGap - buttonSide, buttonSide, buttonSide};
}

QRectF TextEditBox::resizeSquare(QSizeF size)
{
    return around(textFrame(size).bottomRight(), squareSide);
}

std::array<QPointF, 2> TextEditBox::sideGrips(QSizeF size)
{
    const QRectF frame = textFrame(size);
    return {QPointF(frame.left(), frame.center().y()), QPointF(frame.right(), frame.center().y())};
}

std::optional<TextEditBox::Part> TextEditBox::partAt(QPointF p, QSizeF size)
{
    if (emojiButton(size).adjusted(-2, -2, 2, 2).contains(p))
        return Part::emoji;
    if (resizeSquare(size).adjusted(-5, -5, 5, 5).contains(p))
        return Part::resize;
    for (QPointF grip : sideGrips(size)) {
        if (std::hypot(p.x() - grip.x(), p.y() - grip.y()) <= gripReach)
            return Part::move;
    }
    const QRectF frame = textFrame(size);
    const QRectF outer = frame.adjusted(-frameBand, -frameBand, frameBand, frameBand);
    const QRectF inner = frame.adjusted(frameBand, frameBand, -frameBand, -frameBand);
    if (outer.contains(p) && !inner.contains(p))
        return Part::move;
    return std::nullopt;
}

QRegion TextEditBox::hitRegion(QSizeF size)
{
    QRegion region(emojiButton(size).adjusted(-2, -2, 2, 2).toAlignedRect());
    region += resizeSquare(size).adjusted(-5, -5, 5, 5).toAlignedRect();
    for (QPointF grip : sideGrips(size))
        region += QRegion(around(grip, 2 * gripReach).toAlignedRect(), QRegion::Ellipse);
    const QRectF frame = textFrame(size);
    const QRect outer = frame.adjusted(-frameBand, -frameBand, frameBand, frameBand).toAlignedRect();
    const QRect inner = frame.adjusted(frameBand, frameBand, -frameBand, -frameBand).toRect();
    region += QRegion(outer) - QRegion(inner);
    return region;
}

void TextEditBox::follow()
{
    if (!m_field)
        return;
    setGeometry(boxFrame(QRectF(m_field->geometry())).toAlignedRect());
    // The pointer reaches the box only on its parts.
    setMask(hitRegion(size()));
    update();
}

bool TextEditBox::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_field
        && (event->type() == QEvent::Move || event->type() == QEvent::Resize || event->type() == QEvent::Show))
        follow();
    return QWidget::eventFilter(watched, event);
}

void TextEditBox::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const QSizeF box = size();
    // The frame, a little transparent, in the accent colour whatever the text's colour.
    QColor frameColor = m_accent;
    frameColor.setAlphaF(0.75f);
    painter.setPen(QPen(frameColor, lineWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(textFrame(box), 6, 6);

    painter.setPen(QPen(Qt::white, lineWidth));
    painter.setBrush(m_accent);
    for (QPointF grip : sideGrips(box))
        painter.drawEllipse(grip, gripDiameter / 2, gripDiameter / 2);
    painter.drawRoundedRect(resizeSquare(box), 2, 2);

    const QRectF button = emojiButton(box);
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(button);
    // White on a strong accent; the accent may be set light, then black.
    const qreal side = 15;
    const QImage smile = Lucide(Lucide::smile).tinted(side, 2.2, glimpso::TextLook::contrast(m_accent), devicePixelRatioF());
    painter.drawImage(QRectF(button.center() - QPointF(side / 2, side / 2), QSizeF(side, side)), smile);
}

QPointF TextEditBox::inParent(QPointF global) const
{
    return parentWidget() ? parentWidget()->mapFromGlobal(global) : global;
}

void TextEditBox::mousePressEvent(QMouseEvent *event)
{
    const std::optional<Part> part = partAt(event->position(), size());
    if (event->button() != Qt::LeftButton || !part) {
        event->ignore();
        return;
    }
    // Global positions: the box moves under the pointer as the text follows it.
    m_startPoint = m_lastPoint = event->globalPosition();
    switch (*part) {
    case Part::move:
        m_dragging = part;
        setCursor(Qt::ClosedHandCursor);
        break;
    case Part::resize:
        m_dragging = part;
        setCursor(glimpso::cursor(glimpso::Handle::bottomRight));
        if (onResizeBegin)
            onResizeBegin();
        break;
    case Part::emoji:
        if (onEmoji)
            onEmoji();
        break;
    }
}

void TextEditBox::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging) {
        hoverCursor(event->position());
        return;
    }
    const QPointF point = event->globalPosition();
    if (*m_dragging == Part::move && onMove)
        onMove(point - m_lastPoint);
    else if (*m_dragging == Part::resize && onResize)
        onResize(QSizeF(point.x() - m_startPoint.x(), point.y() - m_startPoint.y()), inParent(point));
    m_lastPoint = point;
}

void TextEditBox::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_dragging)
        return QWidget::mouseReleaseEvent(event);
    m_dragging.reset();
    hoverCursor(mapFromGlobal(event->globalPosition()));
}

void TextEditBox::hoverCursor(QPointF p)
{
    const QSizeF box = size();
    if (resizeSquare(box).adjusted(-5, -5, 5, 5).contains(p)) {
        setCursor(glimpso::cursor(glimpso::Handle::bottomRight));
        return;
    }
    for (QPointF grip : sideGrips(box)) {
        if (around(grip, gripCursorSide).contains(p)) {
            setCursor(Qt::OpenHandCursor);
            return;
        }
    }
    if (emojiButton(box).adjusted(-2, -2, 2, 2).contains(p)) {
        setCursor(Qt::PointingHandCursor);
        return;
    }
    // The frame line has no pointer of its own.
    unsetCursor();
}
