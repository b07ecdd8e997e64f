#include "gifencoding/PaletteMapper.h"

#include <gtest/gtest.h>

#include <random>

using namespace gifencoding;
using Colour = PaletteMapper::Colour;

namespace {

std::vector<Colour> randomPalette(std::size_t size, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<Colour> out(size);
    for (auto &c : out)
        c = Colour{std::uint8_t(random()), std::uint8_t(random()), std::uint8_t(random())};
    return out;
}

std::uint8_t bruteForceNearest(const std::vector<Colour> &palette, Colour c)
{
    std::size_t best = 0;
    for (std::size_t i = 1; i < palette.size(); ++i)
        if (PaletteMapper::distance(c, palette[i]) < PaletteMapper::distance(c, palette[best]))
            best = i;
    return std::uint8_t(best);
}

TEST(PaletteMapper, FindsTheNearestEntryOfEveryPalette)
{
    std::mt19937 random(99);
    for (const std::size_t size : {1u, 2u, 17u, 256u}) {
        const auto palette = randomPalette(size, unsigned(size));
        PaletteMapper mapper(palette);
        for (int i = 0; i < 3000; ++i) {
            const Colour c{std::uint8_t(random()), std::uint8_t(random()), std::uint8_t(random())};
            EXPECT_EQ(mapper.nearest(c), bruteForceNearest(palette, c)) << size << " entries";
        }
    }
}

TEST(PaletteMapper, FindsTheNearestEntryWhenEntriesCrowdOneCellOfTheCube)
{
    // 200 entries inside the colours 32..47 of every channel, a few far away,
    // and colours asked from everywhere, cell edges included.
    std::mt19937 random(3);
    std::vector<Colour> palette;
    for (int i = 0; i < 200; ++i)
        palette.push_back(Colour{std::uint8_t(32 + random() % 16), std::uint8_t(32 + random() % 16),
                                 std::uint8_t(32 + random() % 16)});
    palette.insert(palette.end(), {{0, 0, 0}, {255, 255, 255}, {255, 0, 0}, {15, 16, 31}, {48, 47, 63}});
    PaletteMapper mapper(palette);
    for (int r = 0; r < 256; r += 5)
        for (int g = 0; g < 256; g += 7)
            for (const int b : {0, 15, 16, 31, 32, 40, 47, 48, 63, 64, 200, 255}) {
                const Colour c{std::uint8_t(r), std::uint8_t(g), std::uint8_t(b)};
                ASSERT_EQ(PaletteMapper::distance(c, palette[mapper.nearest(c)]),
                          PaletteMapper::distance(c, palette[bruteForceNearest(palette, c)]))
                    << int(c.r) << "," << int(c.g) << "," << int(c.b);
                ASSERT_EQ(mapper.nearest(c), bruteForceNearest(palette, c));
            }
}

TEST(PaletteMapper, GivesTheLowestIndexAmongEqualEntries)
{
    const std::vector<Colour> palette{{200, 0, 0}, {10, 20, 30}, {10, 20, 30}, {0, 0, 0}};
    PaletteMapper mapper(palette);
    EXPECT_EQ(mapper.nearest({10, 20, 30}), 1);
    EXPECT_EQ(mapper.nearest({12, 21, 30}), 1);
}

TEST(PaletteMapper, AnswersTheSameFromItsCacheAsFromASearch)
{
    // Many colours, each asked twice, far more than the cache holds: slots
    // are reused, and a reused slot must never answer for another colour.
    const auto palette = randomPalette(64, 5);
    PaletteMapper mapper(palette);
    std::mt19937 random(6);
    std::vector<Colour> asked(20000);
    for (auto &c : asked)
        c = Colour{std::uint8_t(random()), std::uint8_t(random()), std::uint8_t(random())};
    for (int pass = 0; pass < 2; ++pass)
        for (const Colour c : asked)
            ASSERT_EQ(mapper.nearest(c), bruteForceNearest(palette, c));
}

TEST(PaletteMapper, MapsARowOfPremultipliedBGRA)
{
    const std::vector<Colour> palette{{0, 0, 0}, {255, 0, 0}, {0, 0, 255}};
    PaletteMapper mapper(palette);
    // B, G, R, A: near red, near red, blue, black, near blue.
    const std::vector<std::uint8_t> row{0, 10, 240, 255, 0, 10, 240, 255, 255, 0, 0, 255,
                                        0, 0, 0, 255, 230, 20, 5, 255};
    std::vector<std::uint8_t> indices(5, 99);
    mapper.mapRow(row.data(), 5, indices.data());
    EXPECT_EQ(indices, (std::vector<std::uint8_t>{1, 1, 2, 0, 2}));
}

TEST(PaletteMapper, MovesEachUsedEntryToTheMeanOfItsPixels)
{
    const std::vector<Colour> palette{{0, 0, 0}, {200, 200, 200}, {100, 0, 0}};
    PaletteMapper mapper(palette);
    // Two pixels go to entry 1: (190, 210, 200) and (210, 190, 203); one to entry 0.
    const std::vector<std::uint8_t> row{200, 210, 190, 255, 203, 190, 210, 255, 2, 2, 2, 255};
    std::vector<std::uint8_t> indices(3);
    mapper.mapRow(row.data(), 3, indices.data());
    ASSERT_EQ(indices, (std::vector<std::uint8_t>{1, 1, 0}));
    const auto refined = mapper.refinedPalette();
    ASSERT_EQ(refined.size(), 3u);
    EXPECT_EQ(refined[0], (Colour{2, 2, 2}));
    EXPECT_EQ(refined[1], (Colour{200, 200, 202}));
    EXPECT_EQ(refined[2], (Colour{100, 0, 0})) << "an entry given no pixel stays where it was";
}

} // namespace
