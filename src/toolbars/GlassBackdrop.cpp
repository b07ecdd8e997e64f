#include "toolbars/GlassBackdrop.h"

#include <QPainter>

GlassBackdrop::GlassBackdrop(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void GlassBackdrop::setLook(const QColor &tint, qreal cornerRadius)
{
    m_tint = tint;
    m_radius = cornerRadius;
    update();
}

void GlassBackdrop::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool darkTint = m_tint.lightness() < 128;
    QColor edge = darkTint ? QColor(255, 255, 255) : QColor(0, 0, 0);
    edge.setAlphaF(0.14f);
    painter.setPen(QPen(edge, 1));
    painter.setBrush(m_tint);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), m_radius, m_radius);
}
