#include "gifencoding/PaletteMapper.h"

#include <algorithm>
#include <limits>

namespace gifencoding {

namespace {

// Weights of the squared channel differences: green counts most, blue least,
// roughly as the eye (and a luma-based SSIM) weighs them.
constexpr int weightR = 3;
constexpr int weightG = 4;
constexpr int weightB = 2;

} // namespace

int PaletteMapper::distance(Colour a, Colour b)
{
    const int dr = int(a.r) - int(b.r);
    const int dg = int(a.g) - int(b.g);
    const int db = int(a.b) - int(b.b);
    return weightR * dr * dr + weightG * dg * dg + weightB * db * db;
}

PaletteMapper::PaletteMapper(std::span<const Colour> palette) : palette_(palette.begin(), palette.end())
{
    byGreen_.resize(palette_.size());
    for (std::size_t i = 0; i < palette_.size(); ++i)
        byGreen_[i] = std::uint8_t(i);
    std::stable_sort(byGreen_.begin(), byGreen_.end(),
                     [this](std::uint8_t a, std::uint8_t b) { return palette_[a].g < palette_[b].g; });
    greens_.resize(palette_.size());
    for (std::size_t i = 0; i < palette_.size(); ++i)
        greens_[i] = palette_[byGreen_[i]].g;
}

std::uint8_t PaletteMapper::search(Colour c) const
{
    // Walk out from the pixel's green in both directions; a side is done once
    // its green difference alone costs more than the best entry found.
    const auto start = std::size_t(std::lower_bound(greens_.begin(), greens_.end(), c.g) - greens_.begin());
    int best = std::numeric_limits<int>::max();
    std::uint8_t bestIndex = 0;
    auto consider = [&](std::size_t k) {
        const std::uint8_t index = byGreen_[k];
        const int d = distance(c, palette_[index]);
        if (d < best || (d == best && index < bestIndex)) {
            best = d;
            bestIndex = index;
        }
    };
    std::size_t up = start;
    std::size_t down = start;
    bool upOpen = up < greens_.size();
    bool downOpen = down > 0;
    while (upOpen || downOpen) {
        if (upOpen) {
            const int dg = int(greens_[up]) - int(c.g);
            if (weightG * dg * dg > best)
                upOpen = false;
            else {
                consider(up);
                upOpen = ++up < greens_.size();
            }
        }
        if (downOpen) {
            const int dg = int(c.g) - int(greens_[down - 1]);
            if (weightG * dg * dg > best)
                downOpen = false;
            else {
                consider(--down);
                downOpen = down > 0;
            }
        }
    }
    return bestIndex;
}

std::uint8_t PaletteMapper::nearest(Colour c)
{
    const std::uint32_t key = (std::uint32_t(c.r) << 16 | std::uint32_t(c.g) << 8 | c.b) | 1u << 24;
    const std::size_t slot = ((key * 2654435761u) >> 20) & (cacheSize - 1);
    if (cacheKeys_[slot] != key) {
        cacheKeys_[slot] = key;
        cacheValues_[slot] = search(c);
    }
    return cacheValues_[slot];
}

void PaletteMapper::mapRow(const std::uint8_t *bgra, int width, std::uint8_t *indices)
{
    std::uint32_t lastPixel = 0;
    std::uint8_t lastIndex = 0;
    bool haveLast = false;
    for (int x = 0; x < width; ++x, bgra += 4) {
        const std::uint32_t pixel = std::uint32_t(bgra[0]) | std::uint32_t(bgra[1]) << 8 | std::uint32_t(bgra[2]) << 16;
        if (!haveLast || pixel != lastPixel) {
            lastPixel = pixel;
            lastIndex = nearest(Colour{bgra[2], bgra[1], bgra[0]});
            haveLast = true;
        }
        indices[x] = lastIndex;
        Sum &sum = sums_[lastIndex];
        sum.r += bgra[2];
        sum.g += bgra[1];
        sum.b += bgra[0];
        ++sum.count;
    }
}

std::vector<PaletteMapper::Colour> PaletteMapper::refinedPalette() const
{
    std::vector<Colour> out = palette_;
    for (std::size_t i = 0; i < out.size(); ++i) {
        const Sum &s = sums_[i];
        if (s.count == 0)
            continue;
        const auto mean = [&](std::uint64_t total) { return std::uint8_t((total + s.count / 2) / s.count); };
        out[i] = Colour{mean(s.r), mean(s.g), mean(s.b)};
    }
    return out;
}

} // namespace gifencoding
