#pragma once

#include <QImage>
#include <QPoint>
#include <QSize>

#include <vector>

// A soft shadow's shape: the alpha of a picture, moved and blurred. Stateless.
namespace AlphaBlur {

// A coverage mask of 0 to 1 per pixel, row by row.
struct Mask {
    QSize size;
    std::vector<float> values;
    float at(int x, int y) const { return values[std::size_t(y) * std::size_t(size.width()) + std::size_t(x)]; }
};

// The alpha of `image` laid at `offset` on a mask of `size`, blurred as a
// Gaussian of standard deviation `sigma` pixels would (three box blurs;
// large blurs are worked out at a lower resolution, where they look the
// same). Coverage that the blur carries past the mask's edges is lost, as on
// a canvas of that size.
Mask shadowOf(const QImage &image, QPoint offset, QSize size, double sigma);

// The same along one line, for an opaque rectangle: the coverage of
// [start, end) on a line of `length` pixels, blurred. An opaque rectangle's
// shadow is the product of its two lines' profiles, which costs a line's
// work rather than a picture's.
std::vector<float> profile(int length, int start, int end, double sigma);

} // namespace AlphaBlur
