#include "gifencoding/Image.h"

#include <algorithm>
#include <cmath>

namespace gifencoding {

PixelRect integral(const Rect &r)
{
    const double left = std::floor(std::min(r.x, r.x + r.width));
    const double top = std::floor(std::min(r.y, r.y + r.height));
    const double right = std::ceil(std::max(r.x, r.x + r.width));
    const double bottom = std::ceil(std::max(r.y, r.y + r.height));
    return {int(left), int(top), int(right - left), int(bottom - top)};
}

PixelRect intersection(const PixelRect &a, const PixelRect &b)
{
    const int left = std::max(a.x, b.x);
    const int top = std::max(a.y, b.y);
    const int right = std::min(a.x + a.width, b.x + b.width);
    const int bottom = std::min(a.y + a.height, b.y + b.height);
    if (right <= left || bottom <= top)
        return {};
    return {left, top, right - left, bottom - top};
}

Image::Image(std::shared_ptr<const void> owner, const std::uint8_t *pixels, int width, int height,
             std::ptrdiff_t bytesPerLine)
    : owner_(std::move(owner)), pixels_(pixels), width_(width), height_(height),
      bytesPerLine_(bytesPerLine)
{
}

Image Image::fromBGRA(std::vector<std::uint8_t> bytes, int width, int height)
{
    auto owner = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
    const std::uint8_t *pixels = owner->data();
    return Image(std::move(owner), pixels, width, height, std::ptrdiff_t(width) * 4);
}

std::optional<Image> Image::cropped(const PixelRect &r) const
{
    const PixelRect inside = intersection(r, bounds());
    if (inside.isEmpty() || isNull())
        return std::nullopt;
    return Image(owner_, line(inside.y) + std::ptrdiff_t(inside.x) * 4, inside.width,
                 inside.height, bytesPerLine_);
}

} // namespace gifencoding
