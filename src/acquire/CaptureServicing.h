#pragma once

#include <QFuture>
#include <QImage>

#include <cstdint>

// How the coordinator reaches the screen: one frozen picture of one display.
// Both calls return at once; the picture is taken off the main thread. A
// failure finishes the future with an AppError (captureFailed).
class CaptureServicing
{
public:
    virtual ~CaptureServicing() = default;

    virtual QFuture<QImage> captureDisplay(std::uint32_t displayID) = 0;
    // The same picture without the desktop's icon windows where the backend
    // can leave them out; otherwise the plain picture.
    virtual QFuture<QImage> captureDisplayHidingDesktopIcons(std::uint32_t displayID, double scale) = 0;
    // Lets go of memory kept to make the next capture quicker; called once
    // captures have stopped for a while, so an idle copy stays small.
    virtual void releaseKeptMemory() {}
    // Makes ready the memory that the captures since the last call had to do
    // without, so that a quick next capture finds it; called when a capture's
    // flow has ended, where the work delays no one. The future finishes when
    // the memory is ready.
    virtual QFuture<void> keepMemoryReady() { return {}; }
};
