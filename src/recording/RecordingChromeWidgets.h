#pragma once

#include "recording/RecordingChrome.h"

#include <memory>

class CountdownPanel;
class RecordingBorder;
class RecordingControlBar;

// The recording's chrome as real windows: the border, the countdown panel
// and the control bar. With a compositing manager they are see-through;
// without one they are opaque and cut to their shapes.
class RecordingChromeWidgets : public RecordingChrome
{
public:
    explicit RecordingChromeWidgets(bool translucent);
    ~RecordingChromeWidgets() override;

    void showBorder(const QRectF &area) override;
    void showCountdown(const QRectF &area, int n) override;
    void hideCountdown() override;
    QSizeF barSize() const override;
    void showBar(const QRectF &frame, std::function<void()> onStop, std::function<void()> onCancel) override;
    void setSeconds(double seconds) override;
    void hideAll() override;

    RecordingBorder *border() const { return m_border.get(); }
    CountdownPanel *countdown() const { return m_countdown.get(); }
    RecordingControlBar *bar() const { return m_bar.get(); }

private:
    bool m_translucent;
    std::unique_ptr<RecordingBorder> m_border;
    std::unique_ptr<CountdownPanel> m_countdown;
    std::unique_ptr<RecordingControlBar> m_bar;
};
