#pragma once

#include <cstdint>

struct xcb_connection_t;

namespace X11PixelFormat {

// Whether pixels of `depth` on this server are laid out as QImage's RGB32
// reads them: 32 bits per pixel, depth 24 or 32, least significant byte
// first (blue, green, red, unused in memory).
bool hasRgb32Layout(xcb_connection_t *c, std::uint8_t depth);

} // namespace X11PixelFormat
