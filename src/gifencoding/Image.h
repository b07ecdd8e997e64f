#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace gifencoding {

// A rectangle in image pixels, top-left origin, in floating point as a
// capture stream reports it.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

// A rectangle of whole pixels.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    friend bool operator==(const PixelRect &, const PixelRect &) = default;
};

// Rounds outward to whole pixels: the smallest pixel rectangle that holds `r`.
PixelRect integral(const Rect &r);
// The common part of two pixel rectangles; empty (all zero) when they do not meet.
PixelRect intersection(const PixelRect &a, const PixelRect &b);

// An immutable BGRA picture, 8 bits a channel, alpha premultiplied (the byte
// order of a little-endian ARGB32 word, which is what screen grabs and
// QImage::Format_ARGB32_Premultiplied hold). The pixels are shared, never
// copied: a crop is a view on the same memory, and the owner keeps that memory
// alive for as long as any view exists, so a frame can be handed to another
// thread for coding after the caller has moved on.
class Image {
public:
    Image() = default;
    // Wraps pixels that `owner` keeps alive; `bytesPerLine` may exceed width × 4.
    Image(std::shared_ptr<const void> owner, const std::uint8_t *pixels, int width, int height,
          std::ptrdiff_t bytesPerLine);
    // Takes the bytes, tightly packed rows of width × 4.
    static Image fromBGRA(std::vector<std::uint8_t> bytes, int width, int height);

    int width() const { return width_; }
    int height() const { return height_; }
    std::ptrdiff_t bytesPerLine() const { return bytesPerLine_; }
    bool isNull() const { return pixels_ == nullptr || width_ <= 0 || height_ <= 0; }
    const std::uint8_t *line(int y) const { return pixels_ + y * bytesPerLine_; }
    PixelRect bounds() const { return {0, 0, width_, height_}; }

    // The part of the image inside `r`, sharing its pixels; absent if `r`
    // does not meet the image.
    std::optional<Image> cropped(const PixelRect &r) const;

private:
    std::shared_ptr<const void> owner_;
    const std::uint8_t *pixels_ = nullptr;
    int width_ = 0;
    int height_ = 0;
    std::ptrdiff_t bytesPerLine_ = 0;
};

} // namespace gifencoding
