#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace gifencoding {

// Cuts the image block out of a GIF file that holds one image, and gives it a
// new position and a palette of its own. Whatever the coder put around the
// image (its logical screen, its extensions, its trailer) is left behind, so
// the animation's framing is entirely the writer's.
namespace ImageBlock {

// The image separator, `left` and `top` (low 16 bits, little-endian), the
// coder's width and height, the packed field, the colour table (the local one,
// or the global one promoted to local), and the LZW data with its terminator.
// Absent when the bytes are not a GIF with an image that ends where it says.
std::optional<std::vector<std::uint8_t>> extract(std::span<const std::uint8_t> gif, int left,
                                                 int top);

} // namespace ImageBlock
} // namespace gifencoding
