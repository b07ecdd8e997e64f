#pragma once

#include <QWidget>

#include <functional>

class BarButton;
class PulsingDot;
class QLabel;

// The recording's control bar, 196 × 44 points: a pulsing red dot, the
// running clock ("0:00"), Stop and Cancel, on a dark rounded panel. It never
// takes the keyboard from the program being recorded.
class RecordingControlBar : public QWidget
{
public:
    static constexpr QSize barSize{196, 44};

    RecordingControlBar(bool translucent, std::function<void()> onStop, std::function<void()> onCancel,
                        QWidget *parent = nullptr);

    // Shows the bar at `frame` (global points).
    void showAt(const QRectF &frame);
    void setSeconds(double seconds);
    QString timeText() const;

    BarButton *stopButton() const { return m_stop; }
    BarButton *cancelButton() const { return m_cancel; }

    // "%d:%02d" of the whole seconds; minutes run on without hours (3725 s is "62:05").
    static QString clockText(double seconds);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_translucent;
    PulsingDot *m_dot = nullptr;
    QLabel *m_time = nullptr;
    BarButton *m_stop = nullptr;
    BarButton *m_cancel = nullptr;
};
