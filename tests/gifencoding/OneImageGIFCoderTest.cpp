#include "gifencoding/OneImageGIFCoder.h"

#include "GIFReadBack.h"
#include "TestImages.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <unistd.h>

using namespace gifencoding;

namespace {

std::filesystem::path saved(const std::vector<std::uint8_t> &gif, const char *name)
{
    const auto path = std::filesystem::temp_directory_path() /
                      (std::string("coder-") + std::to_string(::getpid()) + "-" + name + ".gif");
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char *>(gif.data()),
                                                 std::streamsize(gif.size()));
    return path;
}

TEST(OneImageGIFCoder, CodesAFewColoursExactly)
{
    std::vector<std::uint8_t> bgra;
    const std::uint8_t colours[4][3] = {{255, 0, 0}, {0, 128, 0}, {0, 0, 255}, {250, 250, 250}};
    for (int i = 0; i < 8 * 8; ++i) {
        const auto *c = colours[(i % 8) / 2];
        bgra.insert(bgra.end(), {c[2], c[1], c[0], 255});
    }
    const Image image = Image::fromBGRA(bgra, 8, 8);
    const auto gif = OneImageGIFCoder().encode(image);
    ASSERT_TRUE(gif);
    const auto path = saved(*gif, "few");
    const auto giflib = GIFReadBack::withGiflib(path);
    const auto magick = GIFReadBack::withImageMagick(path);
    std::filesystem::remove(path);

    TestImages::Canvas canvas(8, 8);
    canvas.paint(image, 0, 0);
    ASSERT_EQ(giflib.frames.size(), 1u);
    ASSERT_EQ(magick.frames.size(), 1u);
    EXPECT_EQ(GIFReadBack::largestDifference(giflib.frames[0].rgb, canvas.rgb()), 0);
    EXPECT_EQ(GIFReadBack::largestDifference(magick.frames[0].rgb, canvas.rgb()), 0);
}

// 256 colours in a 16 × 16 picture, or one more in a 17 × 17 one.
Image distinctColours(int side, int count)
{
    std::vector<std::uint8_t> bgra;
    for (int i = 0; i < side * side; ++i) {
        const int c = i % count;
        bgra.insert(bgra.end(), {std::uint8_t(c * 7), std::uint8_t(255 - c), std::uint8_t(c / 2 + 3), 255});
    }
    return Image::fromBGRA(bgra, side, side);
}

TEST(OneImageGIFCoder, KeepsUpTo256ColoursWithoutAnyChange)
{
    const Image image = distinctColours(16, 256);
    const auto gif = OneImageGIFCoder().encode(image);
    ASSERT_TRUE(gif);
    const auto path = saved(*gif, "256");
    const auto giflib = GIFReadBack::withGiflib(path);
    std::filesystem::remove(path);
    TestImages::Canvas canvas(16, 16);
    canvas.paint(image, 0, 0);
    ASSERT_EQ(giflib.frames.size(), 1u);
    EXPECT_EQ(GIFReadBack::largestDifference(giflib.frames[0].rgb, canvas.rgb()), 0);
}

TEST(OneImageGIFCoder, QuantisesMoreThan256ColoursToAClosePalette)
{
    const Image image = distinctColours(17, 289);
    const auto gif = OneImageGIFCoder().encode(image);
    ASSERT_TRUE(gif);
    const auto path = saved(*gif, "289");
    const auto giflib = GIFReadBack::withGiflib(path);
    std::filesystem::remove(path);
    TestImages::Canvas canvas(17, 17);
    canvas.paint(image, 0, 0);
    ASSERT_EQ(giflib.frames.size(), 1u);
    EXPECT_GT(GIFReadBack::largestDifference(giflib.frames[0].rgb, canvas.rgb()), 0);
    EXPECT_LE(GIFReadBack::meanDifference(giflib.frames[0].rgb, canvas.rgb()), 6.0);
}

TEST(OneImageGIFCoder, KeepsAGradientCloseToTheSource)
{
    const Image image = TestImages::gradient(120, 80, 4);
    const auto gif = OneImageGIFCoder().encode(image);
    ASSERT_TRUE(gif);
    const auto path = saved(*gif, "gradient");
    const auto giflib = GIFReadBack::withGiflib(path);
    const auto magick = GIFReadBack::withImageMagick(path);
    std::filesystem::remove(path);

    TestImages::Canvas canvas(120, 80);
    canvas.paint(image, 0, 0);
    ASSERT_EQ(giflib.frames.size(), 1u);
    ASSERT_EQ(magick.frames.size(), 1u);
    EXPECT_LE(GIFReadBack::meanDifference(giflib.frames[0].rgb, canvas.rgb()), 6.0);
    EXPECT_LE(GIFReadBack::meanDifference(magick.frames[0].rgb, canvas.rgb()), 6.0);
}

TEST(OneImageGIFCoder, ShowsPremultipliedPixelsAsOverBlack)
{
    // Half-transparent white, premultiplied: 128 in every colour channel.
    const Image image = Image::fromBGRA({128, 128, 128, 128, 128, 128, 128, 128}, 2, 1);
    const auto gif = OneImageGIFCoder().encode(image);
    ASSERT_TRUE(gif);
    const auto path = saved(*gif, "alpha");
    const auto giflib = GIFReadBack::withGiflib(path);
    std::filesystem::remove(path);
    ASSERT_EQ(giflib.frames.size(), 1u);
    EXPECT_LE(GIFReadBack::largestDifference(giflib.frames[0].rgb, {128, 128, 128, 128, 128, 128}), 2);
}

TEST(OneImageGIFCoder, CodesARowOfAStridedCrop)
{
    const Image image = TestImages::gradient(64, 64, 2);
    const auto part = image.cropped({10, 20, 1, 30});
    ASSERT_TRUE(part);
    const auto gif = OneImageGIFCoder().encode(*part);
    ASSERT_TRUE(gif);
    const auto path = saved(*gif, "thin");
    const auto giflib = GIFReadBack::withGiflib(path);
    std::filesystem::remove(path);
    TestImages::Canvas canvas(1, 30);
    canvas.paint(*part, 0, 0);
    ASSERT_EQ(giflib.frames.size(), 1u);
    EXPECT_LE(GIFReadBack::meanDifference(giflib.frames[0].rgb, canvas.rgb()), 6.0);
}

// Decodes a coded picture with both readers and checks it against the source.
void expectClose(const std::vector<std::uint8_t> &gif, const Image &image, const char *name, double meanLimit,
                 int largestLimit)
{
    const auto path = saved(gif, name);
    const auto giflib = GIFReadBack::withGiflib(path);
    const auto magick = GIFReadBack::withImageMagick(path);
    std::filesystem::remove(path);
    TestImages::Canvas canvas(image.width(), image.height());
    canvas.paint(image, 0, 0);
    ASSERT_EQ(giflib.frames.size(), 1u) << name;
    ASSERT_EQ(magick.frames.size(), 1u) << name;
    EXPECT_LE(GIFReadBack::meanDifference(giflib.frames[0].rgb, canvas.rgb()), meanLimit) << name;
    EXPECT_LE(GIFReadBack::meanDifference(magick.frames[0].rgb, canvas.rgb()), meanLimit) << name;
    EXPECT_LE(GIFReadBack::largestDifference(giflib.frames[0].rgb, canvas.rgb()), largestLimit) << name;
}

TEST(OneImageGIFCoder, QuantisesAPictureOfMoreColoursThanItCountsOneByOne)
{
    // 512 × 512 with a different colour in nearly every pixel: far more than
    // the colour count keeps apart, so it counts with low bits dropped.
    std::vector<std::uint8_t> bgra;
    for (int y = 0; y < 512; ++y)
        for (int x = 0; x < 512; ++x)
            bgra.insert(bgra.end(), {std::uint8_t(x / 2), std::uint8_t(y / 2), std::uint8_t((x + y) / 4), 255});
    const Image image = Image::fromBGRA(bgra, 512, 512);
    const auto gif = OneImageGIFCoder().encode(image);
    ASSERT_TRUE(gif);
    expectClose(*gif, image, "many", 6.0, 48);
}

TEST(OneImageGIFCoder, DiffusesTheErrorWhenAskedTo)
{
    const Image image = TestImages::gradient(160, 120, 1);
    const auto plain = OneImageGIFCoder().encode(image);
    const auto dithered = OneImageGIFCoder(OneImageGIFCoder::Settings{8, 1.0f, 100}).encode(image);
    ASSERT_TRUE(plain);
    ASSERT_TRUE(dithered);
    EXPECT_NE(*plain, *dithered);
    expectClose(*dithered, image, "dithered", 6.0, 64);
}

TEST(OneImageGIFCoder, TakesFewerBytesForAGradientAtALowerTargetQuality)
{
    // A soft wallpaper gradient: some 1,500 colours, each close to its neighbours.
    std::vector<std::uint8_t> bgra;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 300; ++x)
            bgra.insert(bgra.end(), {std::uint8_t(118), std::uint8_t(60 + y / 5), std::uint8_t(40 + x / 8), 255});
    const Image image = Image::fromBGRA(bgra, 300, 200);
    const auto full = OneImageGIFCoder(OneImageGIFCoder::Settings{10, 0.0f, 100}).encode(image);
    const auto live = OneImageGIFCoder().encode(image);
    ASSERT_TRUE(full);
    ASSERT_TRUE(live);
    EXPECT_LT(live->size(), full->size());
    expectClose(*full, image, "quality100", 1.0, 4);
    expectClose(*live, image, "quality98", 3.0, 12);
}

TEST(OneImageGIFCoder, IsAbsentForAnEmptyImage)
{
    EXPECT_FALSE(OneImageGIFCoder().encode(Image()));
}

} // namespace
