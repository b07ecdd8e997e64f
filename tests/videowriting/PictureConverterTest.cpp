#include "videowriting/PictureConverter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using videowriting::PictureConverter::convert;
using videowriting::PictureConverter::evenArea;
using videowriting::PixelRect;
using videowriting::YUVPlanes;

namespace {

// A BGRA picture of one colour and an I420 or NV12 picture to convert into.
struct Fixture {
    int width, height;
    std::vector<std::uint8_t> bgra;
    std::vector<std::uint8_t> y, u, v;

    Fixture(int w, int h, std::uint32_t colour)
        : width(w), height(h), bgra(std::size_t(w) * std::size_t(h) * 4), y(std::size_t(w) * std::size_t(h), 0),
          u(std::size_t(w) * std::size_t(h) / 2, 0), v(std::size_t(w) * std::size_t(h) / 4, 0)
    {
        paint({0, 0, w, h}, colour);
    }

    void paint(PixelRect r, std::uint32_t colour)
    {
        for (int row = r.y; row < r.y + r.height; ++row)
            for (int col = r.x; col < r.x + r.width; ++col)
                std::memcpy(&bgra[(std::size_t(row) * std::size_t(width) + std::size_t(col)) * 4], &colour, 4);
    }

    YUVPlanes planar()
    {
        return {y.data(), u.data(), v.data(), width, width / 2, width / 2, false, width, height};
    }
    YUVPlanes interleaved()
    {
        return {y.data(), u.data(), nullptr, width, width, 0, true, width, height};
    }
    void convertAll(const YUVPlanes &planes) { convert(bgra.data(), width * 4, {0, 0, width, height}, planes); }
};

} // namespace

TEST(PictureConverter, WhiteIsTheTopOfTheLimitedRange)
{
    Fixture f(4, 4, 0xFFFFFFFF);
    f.convertAll(f.planar());
    EXPECT_EQ(f.y[0], 235);
    EXPECT_EQ(f.u[0], 128);
    EXPECT_EQ(f.v[0], 128);
}

TEST(PictureConverter, BlackIsTheBottomOfTheLimitedRange)
{
    Fixture f(4, 4, 0xFF000000);
    f.convertAll(f.planar());
    EXPECT_EQ(f.y[5], 16);
    EXPECT_EQ(f.u[3], 128);
    EXPECT_EQ(f.v[3], 128);
}

TEST(PictureConverter, GreyStaysGrey)
{
    for (std::uint32_t level : {1u, 80u, 128u, 200u, 254u}) {
        Fixture f(2, 2, 0xFF000000 | level | (level << 8) | (level << 16));
        f.convertAll(f.planar());
        EXPECT_EQ(f.u[0], 128) << level;
        EXPECT_EQ(f.v[0], 128) << level;
    }
}

TEST(PictureConverter, PrimariesFollowBT709)
{
    // Red, green, blue in BT.709 limited range: (63, 102, 240), (173, 42, 26), (32, 240, 118).
    const struct {
        std::uint32_t bgra;
        int y, u, v;
    } cases[] = {{0xFFFF0000, 63, 102, 240}, {0xFF00FF00, 173, 42, 26}, {0xFF0000FF, 32, 240, 118}};
    for (const auto &c : cases) {
        Fixture f(2, 2, c.bgra);
        f.convertAll(f.planar());
        EXPECT_NEAR(f.y[0], c.y, 1) << std::hex << c.bgra;
        EXPECT_NEAR(f.u[0], c.u, 1) << std::hex << c.bgra;
        EXPECT_NEAR(f.v[0], c.v, 1) << std::hex << c.bgra;
    }
}

TEST(PictureConverter, ChromaIsTheMeanOfItsBlock)
{
    Fixture f(2, 2, 0xFF000000);
    f.paint({0, 0, 1, 1}, 0xFFFF0000);   // one red pixel of four
    f.paint({1, 1, 1, 1}, 0xFFFF0000);   // and another
    f.convertAll(f.planar());
    Fixture half(2, 2, 0xFF800000);   // half red
    half.convertAll(half.planar());
    EXPECT_NEAR(f.u[0], half.u[0], 1);
    EXPECT_NEAR(f.v[0], half.v[0], 1);
    EXPECT_EQ(f.y[0], 63);
    EXPECT_EQ(f.y[1], 16);
}

TEST(PictureConverter, InterleavedChromaHoldsTheSameValues)
{
    Fixture a(8, 4, 0xFF336699);
    a.paint({2, 0, 4, 2}, 0xFFCC2211);
    Fixture b = a;
    a.convertAll(a.planar());
    b.convertAll(b.interleaved());
    EXPECT_EQ(a.y, b.y);
    for (int i = 0; i < 4 * 2; ++i) {
        EXPECT_EQ(b.u[std::size_t(i) * 2], a.u[std::size_t(i)]);
        EXPECT_EQ(b.u[std::size_t(i) * 2 + 1], a.v[std::size_t(i)]);
    }
}

TEST(PictureConverter, OnlyTheRectangleIsWritten)
{
    Fixture f(16, 16, 0xFFFFFFFF);
    convert(f.bgra.data(), 16 * 4, {4, 6, 4, 2}, f.planar());
    for (int row = 0; row < 16; ++row)
        for (int col = 0; col < 16; ++col) {
            const bool inside = col >= 4 && col < 8 && row >= 6 && row < 8;
            EXPECT_EQ(f.y[std::size_t(row) * 16 + std::size_t(col)], inside ? 235 : 0) << col << "," << row;
        }
    EXPECT_EQ(f.u[3 * 8 + 2], 128);
    EXPECT_EQ(f.u[3 * 8 + 1], 0);
    EXPECT_EQ(f.u[3 * 8 + 4], 0);
}

TEST(PictureConverter, RectanglesAreWidenedToEvenEdges)
{
    EXPECT_EQ(evenArea({3, 5, 2, 2}, 100, 100), (PixelRect{2, 4, 4, 4}));
    EXPECT_EQ(evenArea({0, 0, 1, 1}, 100, 100), (PixelRect{0, 0, 2, 2}));
    EXPECT_EQ(evenArea({4, 4, 4, 4}, 100, 100), (PixelRect{4, 4, 4, 4}));
}

TEST(PictureConverter, RectanglesAreCutToThePicture)
{
    EXPECT_EQ(evenArea({90, 95, 20, 20}, 100, 100), (PixelRect{90, 94, 10, 6}));
    EXPECT_EQ(evenArea({-5, -5, 10, 10}, 100, 100), (PixelRect{0, 0, 6, 6}));
    EXPECT_EQ(evenArea({200, 200, 10, 10}, 100, 100).width, 0);
    EXPECT_EQ(evenArea({10, 10, 0, 5}, 100, 100).width, 0);
}

TEST(PictureConverter, RowPaddingOfTheSourceIsSkipped)
{
    const int width = 4, height = 2, stride = 4 * 4 + 12;
    std::vector<std::uint8_t> padded(std::size_t(stride) * height, 0x7F);
    for (int row = 0; row < height; ++row)
        std::memset(&padded[std::size_t(row) * stride], 0xFF, std::size_t(width) * 4);
    Fixture f(width, height, 0);
    convert(padded.data(), stride, {0, 0, width, height}, f.planar());
    for (std::uint8_t luma : f.y)
        EXPECT_EQ(luma, 235);
}
