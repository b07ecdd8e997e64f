#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace videowriting {

// A rectangle of pixels, top-left origin.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const PixelRect &, const PixelRect &) = default;
};

// One picture of the capture stream as the video writer takes it: BGRA in
// memory (premultiplied, opaque on a screen), rows `bytesPerLine` apart, the
// time it shows on the media clock (MediaClock), and what changed since the
// stream's previous frame.
//
// The pixels are read during `append` only, unless `keepAlive` is set: then the
// writer may hold on to it, and so to the pixels, until the frame is encoded,
// instead of copying them.
struct VideoFrame {
    const std::uint8_t *bgra = nullptr;
    int width = 0;
    int height = 0;
    int bytesPerLine = 0;
    double seconds = 0;
    // Absent: the whole frame may have changed. Empty: nothing changed, the
    // frame is the previous picture once more.
    std::optional<std::vector<PixelRect>> changedRects;
    std::shared_ptr<const void> keepAlive;
};

} // namespace videowriting
