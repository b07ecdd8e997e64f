#pragma once

#include <QList>
#include <QRectF>
#include <QtGlobal>

#include <optional>

// The pixels of one frame as the capture stream holds them: rows of 32-bit
// pixels, blue, green, red, then a fourth byte that carries nothing (it may
// be 0 or anything else; readers that need an alpha channel set it). The
// memory belongs to the stream and is written again for the next frame, so
// a sink copies what it keeps before its `append` returns.
struct FramePixels {
    const uchar *bits = nullptr;
    int width = 0;
    int height = 0;
    qsizetype bytesPerLine = 0;

    bool isNull() const { return bits == nullptr || width <= 0 || height <= 0; }
    const uchar *line(int y) const { return bits + qsizetype(y) * bytesPerLine; }
};

// One video frame of a recording.
struct RecordedFrame {
    FramePixels pixels;
    // Presentation time in seconds on the host clock (HostClock).
    double seconds = 0;
    // The parts of the frame that changed since the previous one, in frame
    // pixels (top-left origin); absent when the stream cannot tell.
    std::optional<QList<QRectF>> changedRects;
};

// A run of sound samples: interleaved 32-bit floats, `frameCount` samples
// per channel. Valid only during the call it is handed to.
struct RecordedAudio {
    const float *samples = nullptr;
    int frameCount = 0;
    int channels = 0;
    int sampleRate = 0;
    // The time of the first sample on the host clock.
    double seconds = 0;
};
