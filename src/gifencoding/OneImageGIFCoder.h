#pragma once

#include "gifencoding/Image.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace gifencoding {

// Codes one picture as a complete GIF file in memory. A picture of at most
// 256 colours (most changed rectangles of screen content) gets exactly those
// colours, losslessly. Otherwise libimagequant picks a palette of up to 256
// colours for exactly the pixels given (so a small changed rectangle gets a
// palette of its own colours) and maps the pixels onto it, with error
// diffusion if asked. giflib writes the LZW bytes. The image carries a local
// colour table and no transparency.
class OneImageGIFCoder {
public:
    struct Settings {
        // libimagequant's speed, 1 (best palette, slowest) to 10 (fastest).
        int speed = 8;
        // Strength of the error diffusion, 0 (none) to 1 (full Floyd–Steinberg).
        float ditheringLevel = 1.0f;
        // libimagequant's target quality, 0 to 100: a picture it can show at
        // this quality with fewer than 256 colours gets fewer, which shortens
        // the LZW data (a smooth gradient cut into fewer, wider bands). 100
        // always takes all 256.
        int maxQuality = 100;
    };

    // What the writer uses unless told otherwise: speed 10, no dithering,
    // target quality 98.
    static Settings liveSettings();

    OneImageGIFCoder() : OneImageGIFCoder(liveSettings()) {}
    explicit OneImageGIFCoder(Settings settings) : settings_(settings) {}

    // Absent if the image is empty or a library refuses it.
    std::optional<std::vector<std::uint8_t>> encode(const Image &image) const;

private:
    Settings settings_;
};

} // namespace gifencoding
