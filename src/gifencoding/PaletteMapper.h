#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace gifencoding {

// Maps colours onto a palette of at most 256 entries: each pixel gets the
// nearest entry, with no error diffusion. Screen content repeats colours
// (flat fills, gradients that are constant along a row, text), so a pixel
// equal to the one before it, or to one met recently, costs one comparison;
// a new colour searches only the entries that can be nearest to anything in
// its cell of the colour cube (16 levels a side, worked out the first time a
// pixel falls in the cell), so a photograph's many colours stay cheap. While
// mapping it
// keeps, for every entry, the mean of the pixels given to it, so the palette
// can be moved onto those means afterwards (one k-means step: the same
// indices then show the picture closer to the source).
class PaletteMapper {
public:
    struct Colour {
        std::uint8_t r = 0;
        std::uint8_t g = 0;
        std::uint8_t b = 0;
        friend bool operator==(const Colour &, const Colour &) = default;
    };

    // `palette` holds 1 to 256 colours.
    explicit PaletteMapper(std::span<const Colour> palette);

    // The index of the entry nearest to the colour (weighted squared
    // distance; the lowest index among equals).
    std::uint8_t nearest(Colour c);
    // Maps `width` BGRA pixels (premultiplied, shown as over black) to
    // indices, and counts them towards their entries' means.
    void mapRow(const std::uint8_t *bgra, int width, std::uint8_t *indices);
    // The palette with every entry that was given pixels moved to their mean.
    std::vector<Colour> refinedPalette() const;

    // The distance that `nearest` minimises.
    static int distance(Colour a, Colour b);

private:
    std::uint8_t search(Colour c);
    const std::vector<std::uint8_t> &candidates(Colour c);

    std::vector<Colour> palette_;
    // For each cell of the colour cube, the entries that can be nearest to a
    // colour in it (in index order); empty until first needed.
    static constexpr int cellBits = 4;
    static constexpr int cellsPerSide = 256 >> cellBits;
    std::vector<std::vector<std::uint8_t>> cells_;

    static constexpr std::size_t cacheSize = 4096;
    std::array<std::uint32_t, cacheSize> cacheKeys_{}; // colour | 1 << 24, 0 when empty
    std::array<std::uint8_t, cacheSize> cacheValues_{};

    struct Sum {
        std::uint64_t r = 0, g = 0, b = 0, count = 0;
    };
    std::array<Sum, 256> sums_{};
};

} // namespace gifencoding
