#include "toolbars/ToolbarChip.h"

#include "toolbars/ChipPaint.h"

#include <QEnterEvent>
#include <QMouseEvent>
#include <QPainter>

namespace {

QColor accentColour(const QWidget &widget)
{
    return widget.palette().color(QPalette::Highlight);
}

QColor paletteLabel(const QWidget &widget)
{
    return widget.palette().color(QPalette::WindowText);
}

} // namespace

ToolbarChip::ToolbarChip(Lucide icon, const QString &tip, Metrics metrics, bool accentSelection, QWidget *parent)
    : QWidget(parent), m_icon(icon), m_metrics(metrics), m_accentSelection(accentSelection)
{
    setFixedSize(sizeHint());
    setToolTip(tip);
    setAccessibleName(tip);
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::ArrowCursor);
}

QSize ToolbarChip::sizeHint() const
{
    const int side = int(m_metrics.chip);
    return {side, side};
}

void ToolbarChip::setTint(const QColor &tint)
{
    m_tint = tint;
    update();
}

void ToolbarChip::setHighlighted(bool highlighted)
{
    if (m_highlighted == highlighted)
        return;
    m_highlighted = highlighted;
    update();
}

QColor ToolbarChip::backgroundColor() const
{
    const bool hover = m_hovering && !m_highlighted;
    if (m_accentSelection) {
        if (m_highlighted)
            return accentColour(*this);
        if (hover)
            return ChipPaint::faded(paletteLabel(*this), 0.08);
        return Qt::transparent;
    }
    if (m_highlighted)
        return ChipPaint::faded(m_tint, 0.22);
    if (hover)
        return ChipPaint::faded(m_tint, 0.12);
    return Qt::transparent;
}

QColor ToolbarChip::iconColor() const
{
    if (m_accentSelection && m_highlighted)
        return Qt::white;
    return m_tint;
}

QRectF ToolbarChip::backgroundRect() const
{
    const qreal inset = m_accentSelection ? m_metrics.selectionInset : 0;
    return QRectF(rect()).adjusted(inset, inset, -inset, -inset);
}

void ToolbarChip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor background = backgroundColor();
    if (background.alpha() > 0) {
        const qreal inset = m_accentSelection ? m_metrics.selectionInset : 0;
        const qreal radius = std::max<qreal>(0, m_metrics.radius - inset);
        ChipPaint::fillRounded(painter, backgroundRect(), background, radius);
    }
    const qreal side = m_metrics.icon;
    const QImage image = m_icon.tinted(side, 2, iconColor(), devicePixelRatioF());
    const QPointF origin((width() - side) / 2, (height() - side) / 2);
    painter.drawImage(QRectF(origin, QSizeF(side, side)), image);
}

void ToolbarChip::enterEvent(QEnterEvent *event)
{
    m_hovering = true;
    update();
    QWidget::enterEvent(event);
}

void ToolbarChip::leaveEvent(QEvent *event)
{
    m_hovering = false;
    update();
    QWidget::leaveEvent(event);
}

void ToolbarChip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    event->accept();
    if (onClick)
        onClick();
}

void ToolbarChip::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        update();
    QWidget::changeEvent(event);
}
