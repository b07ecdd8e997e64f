#include "gifencoding/LZWEncoder.h"

#include "GIFReadBack.h"

#include <gif_lib.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <unistd.h>

using namespace gifencoding;

namespace {

// Colour of index i in the test palettes: every index its own colour, so the
// decoded picture tells which index each pixel got.
std::array<std::uint8_t, 3> colourOf(int i)
{
    return {std::uint8_t(i), std::uint8_t(255 - i), std::uint8_t((i * 37) & 0xFF)};
}

// A one-image GIF around the coder's data, with a local table of 2^bits colours.
std::vector<std::uint8_t> wrap(int width, int height, int bits, const std::vector<std::uint8_t> &data)
{
    std::vector<std::uint8_t> out{'G', 'I', 'F', '8', '9', 'a', std::uint8_t(width), std::uint8_t(width >> 8),
                                  std::uint8_t(height), std::uint8_t(height >> 8), 0, 0, 0};
    out.insert(out.end(), {0x2C, 0, 0, 0, 0, std::uint8_t(width), std::uint8_t(width >> 8), std::uint8_t(height),
                           std::uint8_t(height >> 8), std::uint8_t(0x80 | (bits - 1))});
    for (int i = 0; i < (1 << bits); ++i) {
        const auto c = colourOf(i);
        out.insert(out.end(), c.begin(), c.end());
    }
    out.insert(out.end(), data.begin(), data.end());
    out.push_back(0x3B);
    return out;
}

std::vector<std::uint8_t> expectedRGB(const std::vector<std::uint8_t> &indices)
{
    std::vector<std::uint8_t> rgb;
    for (const std::uint8_t i : indices) {
        const auto c = colourOf(i);
        rgb.insert(rgb.end(), c.begin(), c.end());
    }
    return rgb;
}

std::vector<std::uint8_t> coded(const std::vector<std::uint8_t> &indices, int minCodeSize, std::size_t piece)
{
    std::vector<std::uint8_t> data;
    LZWEncoder lzw(data, minCodeSize);
    for (std::size_t i = 0; i < indices.size(); i += piece)
        lzw.add(indices.data() + i, std::min(piece, indices.size() - i));
    lzw.finish();
    return data;
}

// Codes the indices, wraps them, and has both readers decode the file.
void expectBothReadersDecode(const std::vector<std::uint8_t> &indices, int width, int height, int bits,
                             const char *name)
{
    const auto data = coded(indices, std::max(bits, 2), std::size_t(width));
    const auto path = std::filesystem::temp_directory_path() /
                      (std::string("lzw-") + std::to_string(::getpid()) + "-" + name + ".gif");
    const auto gif = wrap(width, height, bits, data);
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char *>(gif.data()), std::streamsize(gif.size()));
    const auto giflib = GIFReadBack::withGiflib(path);
    const auto magick = GIFReadBack::withImageMagick(path);
    std::filesystem::remove(path);
    ASSERT_EQ(giflib.frames.size(), 1u) << name;
    ASSERT_EQ(magick.frames.size(), 1u) << name;
    EXPECT_EQ(giflib.frames[0].rgb, expectedRGB(indices)) << name;
    EXPECT_EQ(magick.frames[0].rgb, expectedRGB(indices)) << name;
}

std::vector<std::uint8_t> randomIndices(std::size_t count, int colours, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<std::uint8_t> out(count);
    for (auto &i : out)
        i = std::uint8_t(random() % unsigned(colours));
    return out;
}

TEST(LZWEncoder, CodesOnePixel)
{
    expectBothReadersDecode({1}, 1, 1, 1, "one");
}

TEST(LZWEncoder, CodesALongRunThroughSeveralFullTables)
{
    // 600 × 600 of one index: strings grow by one pixel per code, so the
    // table fills and is cleared again and again.
    std::vector<std::uint8_t> indices(600 * 600, 3);
    indices[12345] = 0;
    expectBothReadersDecode(indices, 600, 600, 2, "run");
}

TEST(LZWEncoder, CodesNoiseOfEveryCodeSize)
{
    for (const int bits : {1, 2, 3, 5, 8}) {
        const auto indices = randomIndices(300 * 200, 1 << bits, unsigned(bits));
        expectBothReadersDecode(indices, 300, 200, bits, ("noise" + std::to_string(bits)).c_str());
    }
}

TEST(LZWEncoder, CodesRepeatingBandsAsScreensHaveThem)
{
    std::vector<std::uint8_t> indices;
    for (int y = 0; y < 240; ++y)
        for (int x = 0; x < 320; ++x)
            indices.push_back(std::uint8_t((x / 9 + y / 4) % 200));
    expectBothReadersDecode(indices, 320, 240, 8, "bands");
}

TEST(LZWEncoder, GivesTheSameBytesWhateverPiecesItIsFed)
{
    const auto indices = randomIndices(5000, 16, 7);
    const auto whole = coded(indices, 4, indices.size());
    EXPECT_EQ(coded(indices, 4, 1), whole);
    EXPECT_EQ(coded(indices, 4, 77), whole);
}

TEST(LZWEncoder, CutsTheDataIntoSubBlocksOfAtMost255Bytes)
{
    const auto data = coded(randomIndices(20000, 256, 3), 8, 20000);
    ASSERT_GE(data.size(), 3u);
    EXPECT_EQ(data[0], 8);
    std::size_t p = 1;
    int fullBlocks = 0;
    while (p < data.size() && data[p] != 0) {
        fullBlocks += data[p] == 255;
        p += std::size_t(data[p]) + 1;
    }
    EXPECT_EQ(p, data.size() - 1) << "the zero terminator is the last byte";
    EXPECT_GT(fullBlocks, 10);
}

int appendTo(GifFileType *gif, const GifByteType *bytes, int length)
{
    auto *out = static_cast<std::vector<std::uint8_t> *>(gif->UserData);
    out->insert(out->end(), bytes, bytes + length);
    return length;
}

// giflib's coder, for comparison: the image data of its one-image file.
std::vector<std::uint8_t> giflibData(std::vector<std::uint8_t> indices, int width, int height, int bits)
{
    std::vector<std::uint8_t> file;
    int error = 0;
    GifFileType *gif = EGifOpen(&file, appendTo, &error);
    ColorMapObject *map = GifMakeMapObject(1 << bits, nullptr);
    EXPECT_NE(EGifPutScreenDesc(gif, width, height, bits, 0, nullptr), GIF_ERROR);
    EXPECT_NE(EGifPutImageDesc(gif, 0, 0, width, height, false, map), GIF_ERROR);
    EXPECT_NE(EGifPutLine(gif, indices.data(), int(indices.size())), GIF_ERROR);
    EGifCloseFile(gif, &error);
    GifFreeMapObject(map);
    const std::size_t header = 13 + 10 + 3 * (std::size_t(1) << bits);
    return {file.begin() + std::ptrdiff_t(header), file.end() - 1};
}

TEST(LZWEncoder, WritesTheSameCodesAsGiflib)
{
    for (const int bits : {2, 4, 8}) {
        const auto indices = randomIndices(400 * 300, 1 << bits, unsigned(10 + bits));
        EXPECT_EQ(coded(indices, bits, 400), giflibData(indices, 400, 300, bits)) << bits << " bits";
    }
}

} // namespace
