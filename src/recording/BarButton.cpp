#include "recording/BarButton.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

BarButton::BarButton(Kind kind, std::function<void()> action, QWidget *parent)
    : QWidget(parent), m_kind(kind), m_action(std::move(action))
{
    setFixedSize(sizeHint());
    setAttribute(Qt::WA_Hover);
    if (kind == Kind::stop) {
        setAccessibleName(QStringLiteral("Stop recording"));
        setToolTip(QStringLiteral("Stop recording"));
    } else {
        setAccessibleName(QStringLiteral("Cancel recording"));
        setToolTip(QStringLiteral("Cancel: discard the recording"));
    }
}

QSize BarButton::sizeHint() const
{
    return m_kind == Kind::stop ? QSize(70, 28) : QSize(26, 26);
}

void BarButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds = rect();
    if (m_kind == Kind::stop) {
        const double shade = m_pressed ? 0.25 : m_hovering ? 0.1 : 0.0;
        const QColor red(255, 59, 48);
        const QColor fill(int(red.red() * (1 - shade)), int(red.green() * (1 - shade)), int(red.blue() * (1 - shade)));
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(bounds, bounds.height() * 0.5, bounds.height() * 0.5);
        painter.setBrush(Qt::white);
        painter.drawRoundedRect(QRectF(12, bounds.center().y() - 4.5, 9, 9), 2, 2);
        QFont font = painter.font();
        font.setPixelSize(13);
        font.setWeight(QFont::DemiBold);
        painter.setFont(font);
        painter.setPen(Qt::white);
        painter.drawText(QRectF(28, 0, bounds.width() - 28, bounds.height()), Qt::AlignVCenter | Qt::AlignLeft,
                         QStringLiteral("Stop"));
        return;
    }
    const QColor label = palette().color(QPalette::WindowText);
    if (m_hovering || m_pressed) {
        QColor shade = label;
        shade.setAlphaF(m_pressed ? 0.18 : 0.1);
        painter.setPen(Qt::NoPen);
        painter.setBrush(shade);
        painter.drawEllipse(bounds);
    }
    QColor cross = label;
    cross.setAlphaF(0.6);
    QPen pen(cross, 1.8);
    pen.setCapStyle(Qt::RoundCap);
    painter.setPen(pen);
    const QPointF c = bounds.center();
    painter.drawLine(QPointF(c.x() - 4.5, c.y() - 4.5), QPointF(c.x() + 4.5, c.y() + 4.5));
    painter.drawLine(QPointF(c.x() - 4.5, c.y() + 4.5), QPointF(c.x() + 4.5, c.y() - 4.5));
}

void BarButton::enterEvent(QEnterEvent *)
{
    m_hovering = true;
    update();
}

void BarButton::leaveEvent(QEvent *)
{
    m_hovering = false;
    m_pressed = false;
    update();
}

void BarButton::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pressed = true;
    update();
}

void BarButton::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_pressed)
        return;
    m_pressed = false;
    update();
    if (rect().contains(event->position().toPoint()) && m_action)
        m_action();
}
