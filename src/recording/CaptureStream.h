#pragma once

#include "recording/RecordedFrame.h"

#include <QList>
#include <QRectF>
#include <QSize>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

// What a recording asks of the screen: frames of one area of one display.
struct StreamRequest {
    std::uint32_t displayID = 0;
    // The area, and the whole display, in global points.
    QRectF area;
    QRectF screenFrame;
    // The size of the frames, in pixels (RecordingSession::pixelSize).
    QSize outputSize;
    int framesPerSecond = 30;
    bool showsCursor = true;
    // glimpso's own windows that lie over the area (the control bar of a
    // recording of a whole screen), in global points. What they cover is
    // shown in every frame as it was before they appeared, so they are never
    // recorded.
    QList<QRectF> keepOut;
};

// A running capture of an area, implemented by the display server's backend.
// Frames are delivered on a thread of the stream's own, one at a time, each
// stamped by the host clock (HostClock::monotonicSeconds).
class CaptureStream
{
public:
    // What a delivered frame holds. Only complete frames carry a picture
    // worth keeping; the others say the screen was idle, blank, or the
    // stream paused.
    enum class FrameStatus { complete, idle, blank, suspended, started, stopped };

    struct Sample {
        FrameStatus status = FrameStatus::complete;
        RecordedFrame frame;
    };

    // On the stream's thread.
    using OnSample = std::function<void(const Sample &)>;
    // On the stream's thread, when the stream stopped by itself: why.
    using OnStopped = std::function<void(const QString &reason)>;

    virtual ~CaptureStream() = default;

    // Starts delivering. Throws AppError when the stream cannot start.
    virtual void start(OnSample onSample, OnStopped onStopped) = 0;
    // Stops and waits until no callback runs any more; none comes after.
    virtual void stop() = 0;
};

// Makes the stream of a request; throws AppError (displayNotFound when the
// display is gone, captureFailed otherwise).
using CaptureStreamFactory = std::function<std::unique_ptr<CaptureStream>(const StreamRequest &)>;
