#include "TestImages.h"

#include <cmath>

namespace TestImages {

using gifencoding::Image;

Image solid(int width, int height, std::uint8_t r, std::uint8_t g, std::uint8_t b)
{
    std::vector<std::uint8_t> bytes(std::size_t(width) * height * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        bytes[i] = b;
        bytes[i + 1] = g;
        bytes[i + 2] = r;
        bytes[i + 3] = 255;
    }
    return Image::fromBGRA(std::move(bytes), width, height);
}

Image gradient(int width, int height, int seed)
{
    std::vector<std::uint8_t> bytes(std::size_t(width) * height * 4);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t *p = &bytes[(std::size_t(y) * width + x) * 4];
            const double u = double(x) / width;
            const double v = double(y) / height;
            p[2] = std::uint8_t(255 * u);
            p[1] = std::uint8_t(255 * (0.5 + 0.5 * std::sin(6.0 * v + seed)));
            p[0] = std::uint8_t(255 * (1 - u) * v);
            p[3] = 255;
        }
    }
    return Image::fromBGRA(std::move(bytes), width, height);
}

void Canvas::paint(const Image &image, int x, int y)
{
    for (int row = 0; row < image.height(); ++row) {
        const int cy = y + row;
        if (cy < 0 || cy >= height_)
            continue;
        const std::uint8_t *in = image.line(row);
        for (int col = 0; col < image.width(); ++col, in += 4) {
            const int cx = x + col;
            if (cx < 0 || cx >= width_)
                continue;
            std::uint8_t *out = &rgb_[(std::size_t(cy) * width_ + cx) * 3];
            out[0] = in[2];
            out[1] = in[1];
            out[2] = in[0];
        }
    }
}

} // namespace TestImages
