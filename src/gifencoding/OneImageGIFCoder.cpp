#include "gifencoding/OneImageGIFCoder.h"

#include "gifencoding/LZWEncoder.h"
#include "gifencoding/PaletteMapper.h"

#include <libimagequant.h>

#include <algorithm>
#include <array>
#include <memory>

namespace gifencoding {

namespace {

struct AttrDeleter {
    void operator()(liq_attr *a) const { liq_attr_destroy(a); }
};
struct HistogramDeleter {
    void operator()(liq_histogram *h) const { liq_histogram_destroy(h); }
};
struct ImageDeleter {
    void operator()(liq_image *i) const { liq_image_destroy(i); }
};
struct ResultDeleter {
    void operator()(liq_result *r) const { liq_result_destroy(r); }
};
using AttrPtr = std::unique_ptr<liq_attr, AttrDeleter>;
using HistogramPtr = std::unique_ptr<liq_histogram, HistogramDeleter>;
using LiqImagePtr = std::unique_ptr<liq_image, ImageDeleter>;
using ResultPtr = std::unique_ptr<liq_result, ResultDeleter>;
using Colour = PaletteMapper::Colour;

// Hands libimagequant one row at a time as RGBA with alpha 255, so no RGBA
// copy of the whole picture is made. A GIF without transparency shows
// premultiplied colours as they would look over black, which is exactly what
// the premultiplied channels already are.
void opaqueRGBARow(liq_color rowOut[], int row, int width, void *userInfo)
{
    const auto *image = static_cast<const Image *>(userInfo);
    const std::uint8_t *in = image->line(row);
    for (int x = 0; x < width; ++x, in += 4)
        rowOut[x] = liq_color{in[2], in[1], in[0], 255};
}

int bitsFor(std::size_t colours)
{
    int bits = 1;
    while ((std::size_t(1) << bits) < colours)
        ++bits;
    return bits;
}

void put16(std::vector<std::uint8_t> &out, int value)
{
    out.push_back(std::uint8_t(value & 0xFF));
    out.push_back(std::uint8_t((value >> 8) & 0xFF));
}

// A complete one-image GIF: the logical screen without a global table, one
// image at (0, 0) with its palette as a local table, the coded data, the
// trailer. The palette's table is padded to a power of two with black.
std::vector<std::uint8_t> assembleGIF(int width, int height, const std::vector<Colour> &palette, int bits,
                                      const std::vector<std::uint8_t> &data)
{
    std::vector<std::uint8_t> out{'G', 'I', 'F', '8', '9', 'a'};
    out.reserve(13 + 10 + 3 * (std::size_t(1) << bits) + data.size() + 1);
    put16(out, width);
    put16(out, height);
    out.insert(out.end(), {0x00, 0x00, 0x00});
    out.push_back(0x2C);
    put16(out, 0);
    put16(out, 0);
    put16(out, width);
    put16(out, height);
    out.push_back(std::uint8_t(0x80 | (bits - 1)));
    for (std::size_t i = 0; i < (std::size_t(1) << bits); ++i) {
        const Colour c = i < palette.size() ? palette[i] : Colour{};
        out.insert(out.end(), {c.r, c.g, c.b});
    }
    out.insert(out.end(), data.begin(), data.end());
    out.push_back(0x3B);
    return out;
}

// Screen content (text, flat fills, window chrome) often has no more than
// 256 colours in a changed rectangle. Then the palette is the exact set of
// colours and no pixel changes: lossless, and much faster than quantising.
// Gives the palette and the indices, or absent when there are more colours.
struct ExactColours {
    std::vector<Colour> palette;
    std::vector<std::uint8_t> indices;
};

std::optional<ExactColours> exactColours(const Image &image)
{
    constexpr std::size_t slots = 1024; // a power of two, well above 256
    constexpr std::uint32_t empty = 0xFFFFFFFF; // no colour has all bits set: alpha is dropped
    std::array<std::uint32_t, slots> keys;
    std::array<std::uint8_t, slots> values{};
    keys.fill(empty);
    ExactColours out;
    out.indices.resize(std::size_t(image.width()) * std::size_t(image.height()));
    std::uint8_t *index = out.indices.data();
    std::uint32_t lastKey = empty;
    std::uint8_t lastIndex = 0;
    for (int y = 0; y < image.height(); ++y) {
        const std::uint8_t *in = image.line(y);
        for (int x = 0; x < image.width(); ++x, in += 4) {
            const std::uint32_t key = std::uint32_t(in[0]) | std::uint32_t(in[1]) << 8 | std::uint32_t(in[2]) << 16;
            if (key != lastKey) {
                std::size_t slot = ((key * 2654435761u) >> 22) & (slots - 1);
                while (keys[slot] != key && keys[slot] != empty)
                    slot = (slot + 1) & (slots - 1);
                if (keys[slot] == empty) {
                    if (out.palette.size() == 256)
                        return std::nullopt;
                    keys[slot] = key;
                    values[slot] = std::uint8_t(out.palette.size());
                    out.palette.push_back(Colour{in[2], in[1], in[0]});
                }
                lastKey = key;
                lastIndex = values[slot];
            }
            *index++ = lastIndex;
        }
    }
    return out;
}

// The colours of the picture and how often each occurs, for libimagequant's
// palette search, counted here in one pass instead of handing it the picture
// (which would make it hold a float copy of every pixel). Many-coloured
// pictures are counted with the low bits of each channel dropped, so the
// table stays small; a palette of 256 entries cannot tell such colours apart
// anyway.
std::vector<liq_histogram_entry> colourCounts(const Image &image)
{
    constexpr std::size_t slots = std::size_t(1) << 17;
    constexpr std::size_t mostColours = slots / 2;
    constexpr std::uint32_t empty = 0xFFFFFFFF;
    std::vector<std::uint32_t> keys(slots);
    std::vector<std::uint32_t> counts(slots);
    for (int dropped = 0;; ++dropped) {
        const std::uint32_t mask = (0xFFu << dropped) & 0xFFu;
        const std::uint32_t keyMask = mask | mask << 8 | mask << 16;
        std::fill(keys.begin(), keys.end(), empty);
        std::fill(counts.begin(), counts.end(), 0);
        std::size_t colours = 0;
        bool overflow = false;
        for (int y = 0; y < image.height() && !overflow; ++y) {
            const std::uint8_t *in = image.line(y);
            std::uint32_t lastKey = empty;
            std::size_t lastSlot = 0;
            for (int x = 0; x < image.width(); ++x, in += 4) {
                const std::uint32_t key =
                    (std::uint32_t(in[0]) | std::uint32_t(in[1]) << 8 | std::uint32_t(in[2]) << 16) & keyMask;
                if (key != lastKey) {
                    std::size_t slot = ((key * 2654435761u) >> 15) & (slots - 1);
                    while (keys[slot] != key && keys[slot] != empty)
                        slot = (slot + 1) & (slots - 1);
                    if (keys[slot] == empty) {
                        if (++colours > mostColours) {
                            overflow = true;
                            break;
                        }
                        keys[slot] = key;
                    }
                    lastKey = key;
                    lastSlot = slot;
                }
                ++counts[lastSlot];
            }
        }
        if (overflow && dropped < 3)
            continue;
        // The middle of each dropped range stands for the colours in it.
        const std::uint8_t half = std::uint8_t(dropped > 0 ? 1u << (dropped - 1) : 0u);
        std::vector<liq_histogram_entry> entries;
        entries.reserve(colours);
        for (std::size_t slot = 0; slot < slots; ++slot) {
            if (keys[slot] == empty)
                continue;
            const std::uint32_t k = keys[slot];
            entries.push_back(liq_histogram_entry{
                liq_color{std::uint8_t((k >> 16) | half), std::uint8_t(((k >> 8) & 0xFF) | half),
                          std::uint8_t((k & 0xFF) | half), 255},
                counts[slot]});
        }
        return entries;
    }
}

std::optional<std::vector<std::uint8_t>> codeExact(const Image &image, const ExactColours &exact)
{
    const int bits = bitsFor(std::max<std::size_t>(exact.palette.size(), 2));
    std::vector<std::uint8_t> data;
    data.reserve(exact.indices.size() / 4 + 64);
    LZWEncoder lzw(data, std::max(bits, 2));
    lzw.add(exact.indices.data(), exact.indices.size());
    lzw.finish();
    return assembleGIF(image.width(), image.height(), exact.palette, bits, data);
}

AttrPtr attributes(const OneImageGIFCoder::Settings &settings)
{
    AttrPtr attr(liq_attr_create());
    if (!attr)
        return nullptr;
    liq_set_speed(attr.get(), std::clamp(settings.speed, 1, 10));
    liq_set_max_colors(attr.get(), 256);
    if (liq_set_quality(attr.get(), 0, std::clamp(settings.maxQuality, 0, 100)) != LIQ_OK)
        return nullptr;
    return attr;
}

std::vector<Colour> coloursOf(const liq_palette &palette)
{
    std::vector<Colour> out;
    for (unsigned i = 0; i < palette.count; ++i)
        out.push_back(Colour{palette.entries[i].r, palette.entries[i].g, palette.entries[i].b});
    return out;
}

// No error diffusion: the palette comes from the colour counts, and each row
// is mapped to its nearest entries and coded as it goes, so neither a float
// copy nor an index copy of the picture is ever made.
std::optional<std::vector<std::uint8_t>> codeNearest(const Image &image, const OneImageGIFCoder::Settings &settings)
{
    AttrPtr attr = attributes(settings);
    if (!attr)
        return std::nullopt;
    HistogramPtr histogram(liq_histogram_create(attr.get()));
    if (!histogram)
        return std::nullopt;
    const std::vector<liq_histogram_entry> counts = colourCounts(image);
    if (liq_histogram_add_colors(histogram.get(), attr.get(), counts.data(), int(counts.size()), 0) != LIQ_OK)
        return std::nullopt;
    liq_result *rawResult = nullptr;
    if (liq_histogram_quantize(histogram.get(), attr.get(), &rawResult) != LIQ_OK)
        return std::nullopt;
    ResultPtr result(rawResult);
    const liq_palette *palette = liq_get_palette(result.get());
    if (!palette || palette->count == 0)
        return std::nullopt;

    const std::vector<Colour> chosen = coloursOf(*palette);
    PaletteMapper mapper(chosen);
    const int bits = bitsFor(std::max<std::size_t>(chosen.size(), 2));
    std::vector<std::uint8_t> data;
    data.reserve(std::size_t(image.width()) * std::size_t(image.height()) / 4 + 64);
    LZWEncoder lzw(data, std::max(bits, 2));
    std::vector<std::uint8_t> row(std::size_t(image.width()));
    for (int y = 0; y < image.height(); ++y) {
        mapper.mapRow(image.line(y), image.width(), row.data());
        lzw.add(row.data(), row.size());
    }
    lzw.finish();
    return assembleGIF(image.width(), image.height(), mapper.refinedPalette(), bits, data);
}

// With error diffusion: libimagequant maps the whole picture itself.
std::optional<std::vector<std::uint8_t>> codeDithered(const Image &image, const OneImageGIFCoder::Settings &settings)
{
    AttrPtr attr = attributes(settings);
    if (!attr)
        return std::nullopt;
    LiqImagePtr liqImage(liq_image_create_custom(attr.get(), opaqueRGBARow, const_cast<Image *>(&image),
                                                 image.width(), image.height(), 0));
    if (!liqImage)
        return std::nullopt;
    liq_result *rawResult = nullptr;
    if (liq_image_quantize(liqImage.get(), attr.get(), &rawResult) != LIQ_OK)
        return std::nullopt;
    ResultPtr result(rawResult);
    liq_set_dithering_level(result.get(), std::clamp(settings.ditheringLevel, 0.0f, 1.0f));
    std::vector<std::uint8_t> indices(std::size_t(image.width()) * std::size_t(image.height()));
    if (liq_write_remapped_image(result.get(), liqImage.get(), indices.data(), indices.size()) != LIQ_OK)
        return std::nullopt;
    const liq_palette *palette = liq_get_palette(result.get());
    if (!palette || palette->count == 0)
        return std::nullopt;
    const std::vector<Colour> colours = coloursOf(*palette);
    const int bits = bitsFor(std::max<std::size_t>(colours.size(), 2));
    std::vector<std::uint8_t> data;
    LZWEncoder lzw(data, std::max(bits, 2));
    lzw.add(indices.data(), indices.size());
    lzw.finish();
    return assembleGIF(image.width(), image.height(), colours, bits, data);
}

} // namespace

OneImageGIFCoder::Settings OneImageGIFCoder::liveSettings()
{
    // Measured on recorded desktops (docs/gifencoding.md): the fastest palette
    // search loses nothing visible on screen content, and without error
    // diffusion a busy photographic area comes out both smaller and closer to
    // the source, while smooth gradients come out the same. A target quality
    // of 98 lets a gradient take fewer, wider bands: a third of the bytes on
    // a moving wallpaper gradient for an SSIM still above 0.996, and the
    // same SSIM as before on a terminal scene. That keeps a changing full-HD
    // area at 15 frames a second within two cores.
    return Settings{10, 0.0f, 98};
}

std::optional<std::vector<std::uint8_t>> OneImageGIFCoder::encode(const Image &image) const
{
    if (image.isNull())
        return std::nullopt;
    if (auto exact = exactColours(image))
        return codeExact(image, *exact);
    if (settings_.ditheringLevel <= 0.0f)
        return codeNearest(image, settings_);
    return codeDithered(image, settings_);
}

} // namespace gifencoding
