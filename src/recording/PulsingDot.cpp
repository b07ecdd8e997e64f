#include "recording/PulsingDot.h"

#include <QPainter>

PulsingDot::PulsingDot(QWidget *parent) : QWidget(parent)
{
    setFixedSize(10, 10);
    // 1 → 0.35 in 0.8 s, then back, for ever.
    m_pulse.setDuration(1600);
    m_pulse.setKeyValueAt(0, 1.0);
    m_pulse.setKeyValueAt(0.5, 0.35);
    m_pulse.setKeyValueAt(1, 1.0);
    m_pulse.setEasingCurve(QEasingCurve::InOutSine);
    m_pulse.setLoopCount(-1);
    connect(&m_pulse, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        m_opacity = value.toDouble();
        update();
    });
}

void PulsingDot::showEvent(QShowEvent *)
{
    m_pulse.start();
}

void PulsingDot::hideEvent(QHideEvent *)
{
    m_pulse.stop();
}

void PulsingDot::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(m_opacity);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 59, 48));
    painter.drawEllipse(rect());
}
