#pragma once

#include <QRectF>
#include <QSizeF>

#include <functional>

// What a recording shows on the screen besides what it records: the dashed
// border around the area, the 3-2-1 countdown, and the control bar with its
// clock, stop and cancel. All in global points; main thread only. The
// session drives it, so it is tested without windows.
class RecordingChrome
{
public:
    virtual ~RecordingChrome() = default;

    // The border just outside `area`; never inside it, so never recorded.
    virtual void showBorder(const QRectF &area) = 0;
    // The count `n`, centred on `area`.
    virtual void showCountdown(const QRectF &area, int n) = 0;
    virtual void hideCountdown() = 0;
    // The control bar's size, before it is shown.
    virtual QSizeF barSize() const = 0;
    // Shows the bar at `frame`, reading "0:00".
    virtual void showBar(const QRectF &frame, std::function<void()> onStop, std::function<void()> onCancel) = 0;
    virtual void setSeconds(double seconds) = 0;
    // Everything goes.
    virtual void hideAll() = 0;
};
