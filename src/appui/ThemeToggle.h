#pragma once

#include <QAbstractButton>
#include <QVariantAnimation>

// The on/off switch of settings rows: a capsule, green when on and grey when
// off, with a white knob that slides across. A disabled switch is faded and
// ignores clicks and keys. Where the desktop asks for less motion, the knob
// jumps instead of sliding.
class ThemeToggle : public QAbstractButton
{
    Q_OBJECT

public:
    explicit ThemeToggle(QWidget *parent = nullptr);

    // Whether the desktop has turned animations off: its style gives them no time.
    static bool desktopReducesMotion();
    bool reducesMotion() const { return m_reducesMotion; }
    void setReducesMotion(bool reduces) { m_reducesMotion = reduces; }

    // Where the knob is drawn now: 0 at the off end, 1 at the on end.
    qreal knobPosition() const { return m_knob; }
    bool isSliding() const { return m_slide.state() == QAbstractAnimation::Running; }

    QColor trackColor() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &pos) const override;

private:
    void follow(bool checked);

    bool m_reducesMotion;
    qreal m_knob = 0;
    QVariantAnimation m_slide;
};
