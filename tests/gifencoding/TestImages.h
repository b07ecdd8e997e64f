#pragma once

#include "gifencoding/Image.h"

#include <cstdint>
#include <vector>

// Pictures for the tests and the RGB canvas that a GIF viewer should show
// after each frame.
namespace TestImages {

gifencoding::Image solid(int width, int height, std::uint8_t r, std::uint8_t g, std::uint8_t b);
// Smooth colour ramps with a little texture: many colours, as a photo or a
// wallpaper has, so the palette and the dithering have work to do.
gifencoding::Image gradient(int width, int height, int seed);

class Canvas {
public:
    Canvas(int width, int height) : width_(width), height_(height), rgb_(std::size_t(width) * height * 3) {}
    // Paints `image` with its top-left corner at (x, y), clipped to the canvas.
    void paint(const gifencoding::Image &image, int x, int y);
    const std::vector<std::uint8_t> &rgb() const { return rgb_; }

private:
    int width_;
    int height_;
    std::vector<std::uint8_t> rgb_;
};

} // namespace TestImages
