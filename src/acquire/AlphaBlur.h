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

} // namespace AlphaBlur
