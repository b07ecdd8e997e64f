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

PaletteMapper::PaletteMapper(std::span<const Colour> palette)
    : palette_(palette.begin(), palette.end()), cells_(std::size_t(cellsPerSide * cellsPerSide * cellsPerSide))
{
}

const std::vector<std::uint8_t> &PaletteMapper::candidates(Colour c)
{
    const int r = c.r >> cellBits, g = c.g >> cellBits, b = c.b >> cellBits;
    std::vector<std::uint8_t> &cell = cells_[std::size_t((r * cellsPerSide + g) * cellsPerSide + b)];
    if (!cell.empty())
        return cell;
    // An entry can be nearest to some colour of the cell only if its least
    // distance to the cell is no more than the smallest, over all entries, of
    // the greatest distance to the cell: that entry is at least that close to
    // every colour in it.
    const int size = 1 << cellBits;
    const int low[3] = {r * size, g * size, b * size};
    const int weights[3] = {weightR, weightG, weightB};
    std::vector<int> least(palette_.size());
    int bound = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < palette_.size(); ++i) {
        const int value[3] = {palette_[i].r, palette_[i].g, palette_[i].b};
        int dmin = 0, dmax = 0;
        for (int k = 0; k < 3; ++k) {
            const int lo = low[k], hi = low[k] + size - 1;
            const int inside = value[k] < lo ? lo - value[k] : value[k] > hi ? value[k] - hi : 0;
            const int outside = std::max(value[k] - lo, hi - value[k]);
            dmin += weights[k] * inside * inside;
            dmax += weights[k] * outside * outside;
        }
        least[i] = dmin;
        bound = std::min(bound, dmax);
    }
    for (std::size_t i = 0; i < palette_.size(); ++i)
        if (least[i] <= bound)
            cell.push_back(std::uint8_t(i));
    return cell;
}

std::uint8_t PaletteMapper::search(Colour c)
{
    int best = std::numeric_limits<int>::max();
    std::uint8_t bestIndex = 0;
    for (const std::uint8_t index : candidates(c)) {
        const int d = distance(c, palette_[index]);
        if (d < best) {
            best = d;
            bestIndex = index;
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
