#pragma once

#include <QList>
#include <QPointF>
#include <QRectF>

#include <cstdint>
#include <optional>

// The displays of the desktop as the coordinator sees them, in global points.
class ScreenList
{
public:
    struct Screen {
        // Absent for a display the platform cannot name; such a display is
        // left out of captures.
        std::optional<std::uint32_t> displayID;
        QRectF frame; // global points, y up
        double scale = 1.0;
    };

    virtual ~ScreenList() = default;
    // In the desktop's order; the first is the primary display.
    virtual QList<Screen> screens() const = 0;
    // The index of the display that has the keyboard focus, if any.
    virtual std::optional<int> mainIndex() const = 0;
    // The pointer, in global points.
    virtual QPointF mouseLocation() const = 0;
    // Whether the desktop lets glimpso read the screen. An X server always
    // does; a portal may say no.
    virtual bool hasCaptureAccess() const { return true; }
    // Asks the desktop for access, where it has a way to ask.
    virtual void requestCaptureAccess() {}
};
