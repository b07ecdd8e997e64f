#include "appui/ThemeToggle.h"

#include "appui/Theme.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>

namespace {

constexpr int trackWidth = 34;
constexpr int trackHeight = 20;
constexpr qreal knobInset = 2;
constexpr int slideMs = 140;
constexpr qreal disabledOpacity = 0.45;

} // namespace

ThemeToggle::ThemeToggle(QWidget *parent)
    : QAbstractButton(parent)
    , m_reducesMotion(desktopReducesMotion())
{
    setCheckable(true);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_slide.setDuration(slideMs);
    m_slide.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_slide, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        m_knob = value.toReal();
        update();
    });
    connect(this, &QAbstractButton::toggled, this, &ThemeToggle::follow);
}

bool ThemeToggle::desktopReducesMotion()
{
    // Desktops that honour an animation setting pass it to Qt's style as
    // the time widgets may spend animating; none means no motion.
    return QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration) == 0;
}

void ThemeToggle::follow(bool checked)
{
    const qreal target = checked ? 1.0 : 0.0;
    m_slide.stop();
    // A switch that is not on screen, or a desktop without motion: no slide.
    if (m_reducesMotion || !isVisible()) {
        m_knob = target;
        update();
        return;
    }
    m_slide.setStartValue(m_knob);
    m_slide.setEndValue(target);
    m_slide.start();
}

QColor ThemeToggle::trackColor() const
{
    return Theme::color(isChecked() ? Theme::Color::success : Theme::Color::toggleOff);
}

QSize ThemeToggle::sizeHint() const
{
    return {trackWidth, trackHeight};
}

bool ThemeToggle::hitButton(const QPoint &pos) const
{
    return rect().contains(pos);
}

void ThemeToggle::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(disabledOpacity);
    const QRectF track(0, (height() - trackHeight) / 2.0, trackWidth, trackHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(trackColor());
    painter.drawRoundedRect(track, trackHeight / 2.0, trackHeight / 2.0);

    const qreal knobSide = trackHeight - knobInset * 2;
    const qreal travel = trackWidth - knobInset * 2 - knobSide;
    const QRectF knob(track.left() + knobInset + travel * m_knob, track.top() + knobInset, knobSide, knobSide);
    painter.setBrush(QColor(0, 0, 0, 40));
    painter.drawEllipse(knob.translated(0, 0.5));
    painter.setBrush(Qt::white);
    painter.drawEllipse(knob);
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Theme::color(Theme::Color::accent), 1.5));
        painter.drawRoundedRect(track.adjusted(0.75, 0.75, -0.75, -0.75), trackHeight / 2.0, trackHeight / 2.0);
    }
}
