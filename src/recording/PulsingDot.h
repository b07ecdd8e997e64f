#pragma once

#include <QVariantAnimation>
#include <QWidget>

// The red dot of the control bar: 10 points, its opacity going from 1 to
// 0.35 and back every 0.8 s, for as long as it shows.
class PulsingDot : public QWidget
{
public:
    explicit PulsingDot(QWidget *parent = nullptr);

    double opacity() const { return m_opacity; }
    QSize sizeHint() const override { return {10, 10}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QVariantAnimation m_pulse;
    double m_opacity = 1.0;
};
