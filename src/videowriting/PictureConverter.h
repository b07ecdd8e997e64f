#pragma once

#include "videowriting/VideoFrame.h"

#include <cstdint>

namespace videowriting {

// Where a 4:2:0 picture lies in memory: planar (I420: Y, U, V) or with U and V
// interleaved in one plane (NV12, for hardware encoders, `v` unused).
struct YUVPlanes {
    std::uint8_t *y = nullptr;
    std::uint8_t *u = nullptr;
    std::uint8_t *v = nullptr;
    int yStride = 0;
    int uStride = 0;
    int vStride = 0;
    bool interleaved = false;
    int width = 0;    // even
    int height = 0;   // even
};

// Converts screen pixels (BGRA, full range sRGB) into the encoder's picture:
// BT.709 in limited range, chroma the mean of each 2 × 2 block. Works on a
// rectangle so that only what changed is converted; the rectangle is widened
// to even edges, as each chroma sample covers two by two pixels.
namespace PictureConverter {

// The rectangle widened to even edges and cut to the picture.
PixelRect evenArea(const PixelRect &rect, int width, int height);

// Converts `rect` of `bgra` (rows `bytesPerLine` apart, the same coordinates as
// the picture) into `out`.
void convert(const std::uint8_t *bgra, int bytesPerLine, const PixelRect &rect, const YUVPlanes &out);

} // namespace PictureConverter

} // namespace videowriting
