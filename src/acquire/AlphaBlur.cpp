#include "acquire/AlphaBlur.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace AlphaBlur {

namespace {

// Widths of three box blurs that together blur like a Gaussian of `sigma`.
std::array<int, 3> boxesFor(double sigma)
{
    const double ideal = std::sqrt(12.0 * sigma * sigma / 3.0 + 1.0);
    int lower = int(std::floor(ideal));
    if (lower % 2 == 0)
        --lower;
    const int upper = lower + 2;
    const double m = (12.0 * sigma * sigma - 3.0 * lower * lower - 12.0 * lower - 9.0) / (-4.0 * lower - 4.0);
    const int count = int(std::lround(m));
    std::array<int, 3> sizes{};
    for (int i = 0; i < 3; ++i)
        sizes[std::size_t(i)] = i < count ? lower : upper;
    return sizes;
}

// One box blur of odd width `box` along rows (`stride` 1) or columns; what
// lies past the ends counts as zero.
void boxPass(std::vector<float> &data, std::vector<float> &scratch, int length, int lines, int step, int lineStep,
             int box)
{
    const int radius = box / 2;
    if (radius <= 0)
        return;
    const float norm = 1.0f / float(box);
    for (int line = 0; line < lines; ++line) {
        const std::size_t base = std::size_t(line) * std::size_t(lineStep);
        for (int i = 0; i < length; ++i)
            scratch[std::size_t(i)] = data[base + std::size_t(i) * std::size_t(step)];
        float sum = 0;
        for (int i = 0; i <= std::min(radius, length - 1); ++i)
            sum += scratch[std::size_t(i)];
        for (int i = 0; i < length; ++i) {
            data[base + std::size_t(i) * std::size_t(step)] = sum * norm;
            const int add = i + radius + 1;
            const int drop = i - radius;
            if (add < length)
                sum += scratch[std::size_t(add)];
            if (drop >= 0)
                sum -= scratch[std::size_t(drop)];
        }
    }
}

void blur(Mask &mask, double sigma)
{
    if (sigma < 0.3)
        return;
    const int width = mask.size.width(), height = mask.size.height();
    std::vector<float> scratch(std::size_t(std::max(width, height)));
    for (const int box : boxesFor(sigma)) {
        boxPass(mask.values, scratch, width, height, 1, width, box);
        boxPass(mask.values, scratch, height, width, width, 1, box);
    }
}

} // namespace

std::vector<float> profile(int length, int start, int end, double sigma)
{
    std::vector<float> line(std::size_t(std::max(length, 0)), 0.0f);
    for (int i = std::max(start, 0); i < std::min(end, length); ++i)
        line[std::size_t(i)] = 1.0f;
    if (sigma < 0.3 || length <= 0)
        return line;
    std::vector<float> scratch(line.size());
    for (const int box : boxesFor(sigma))
        boxPass(line, scratch, length, 1, 1, length, box);
    return line;
}

Mask shadowOf(const QImage &image, QPoint offset, QSize size, double sigma)
{
    Mask result{size, std::vector<float>(std::size_t(size.width()) * std::size_t(size.height()), 0.0f)};
    if (size.isEmpty() || image.isNull())
        return result;
    // Large blurs at a fraction of the size: a blur of sigma 8 or more shows
    // nothing finer than a few pixels.
    const int factor = sigma >= 16.0 ? std::clamp(int(sigma / 4.0), 1, 16) : 1;
    const QSize small((size.width() + factor - 1) / factor, (size.height() + factor - 1) / factor);
    Mask work{small, std::vector<float>(std::size_t(small.width()) * std::size_t(small.height()), 0.0f)};
    const bool opaque = !image.hasAlphaChannel();
    const QImage argb = opaque ? image : image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const float share = 1.0f / float(factor * factor) / 255.0f;
    for (int y = 0; y < image.height(); ++y) {
        const int ty = y + offset.y();
        if (ty < 0 || ty >= size.height())
            continue;
        const auto *row = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        float *out = &work.values[std::size_t(ty / factor) * std::size_t(small.width())];
        for (int x = 0; x < image.width(); ++x) {
            const int tx = x + offset.x();
            if (tx < 0 || tx >= size.width())
                continue;
            out[tx / factor] += float(opaque ? 255 : qAlpha(row[x])) * share;
        }
    }
    blur(work, sigma / factor);
    if (factor == 1)
        return work;
    // Back to full size, bilinear between the centres of the small pixels.
    for (int y = 0; y < size.height(); ++y) {
        const double sy = std::clamp((y + 0.5) / factor - 0.5, 0.0, double(small.height() - 1));
        const int y0 = int(sy), y1 = std::min(y0 + 1, small.height() - 1);
        const float fy = float(sy - y0);
        float *out = &result.values[std::size_t(y) * std::size_t(size.width())];
        for (int x = 0; x < size.width(); ++x) {
            const double sx = std::clamp((x + 0.5) / factor - 0.5, 0.0, double(small.width() - 1));
            const int x0 = int(sx), x1 = std::min(x0 + 1, small.width() - 1);
            const float fx = float(sx - x0);
            const float top = work.at(x0, y0) * (1 - fx) + work.at(x1, y0) * fx;
            const float bottom = work.at(x0, y1) * (1 - fx) + work.at(x1, y1) * fx;
            out[x] = top * (1 - fy) + bottom * fy;
        }
    }
    return result;
}

} // namespace AlphaBlur
