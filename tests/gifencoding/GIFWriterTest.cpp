#include "gifencoding/GIFWriter.h"

#include "gifencoding/OneImageGIFCoder.h"

#include "GIFReadBack.h"
#include "TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <thread>
#include <unistd.h>

using namespace gifencoding;
using TestImages::Canvas;

namespace {

const std::vector<std::uint8_t> expectedHeader(int width, int height)
{
    return {'G', 'I', 'F', '8', '9', 'a', std::uint8_t(width & 0xFF), std::uint8_t((width >> 8) & 0xFF),
            std::uint8_t(height & 0xFF), std::uint8_t((height >> 8) & 0xFF), 0x00, 0x00, 0x00,
            0x21, 0xFF, 0x0B, 'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0',
            0x03, 0x01, 0x00, 0x00, 0x00};
}

struct ExpectedFrame {
    int delayCentiseconds;
    std::vector<std::uint8_t> rgb;
};

// A gate that the tests open from outside; every wait has a time-out so a
// broken writer fails the test instead of hanging it.
class Gate {
public:
    void open()
    {
        std::lock_guard lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }
    bool wait()
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(20), [this] { return open_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
};

// The red channel of a solid test frame says which frame it is.
int frameNumberOf(const Image &image)
{
    return image.line(0)[2];
}

Image numbered(int number, int width = 16, int height = 12)
{
    return TestImages::solid(width, height, std::uint8_t(number), std::uint8_t(200 - 10 * number), 90);
}

class GIFWriterTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        dir_ = std::filesystem::temp_directory_path() /
               ("gifwriter-test-" + std::to_string(::getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(dir_);
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::filesystem::path file() const { return dir_ / "out.gif"; }

    // Both readers must see the expected frames: count, delays, and each
    // frame's picture within the colour tolerance of a 256-colour palette.
    void expectReadBack(const std::vector<ExpectedFrame> &expected, int width, int height,
                        double meanTolerance = 1.5, int largestTolerance = 24)
    {
        const auto giflib = GIFReadBack::withGiflib(file());
        const auto magick = GIFReadBack::withImageMagick(file());
        EXPECT_EQ(giflib.width, width);
        EXPECT_EQ(giflib.height, height);
        EXPECT_EQ(giflib.loopCount, 0);
        for (const auto &frame : giflib.frames)
            EXPECT_EQ(frame.disposal, 1) << "every frame leaves its picture in place";
        for (const auto *a : {&giflib, &magick}) {
            const char *reader = a == &giflib ? "giflib" : "ImageMagick";
            ASSERT_EQ(a->frames.size(), expected.size()) << reader;
            for (std::size_t i = 0; i < expected.size(); ++i) {
                EXPECT_EQ(a->frames[i].delayCentiseconds, expected[i].delayCentiseconds)
                    << reader << " frame " << i;
                if (expected[i].rgb.empty())
                    continue;
                EXPECT_LE(GIFReadBack::meanDifference(a->frames[i].rgb, expected[i].rgb), meanTolerance)
                    << reader << " frame " << i;
                EXPECT_LE(GIFReadBack::largestDifference(a->frames[i].rgb, expected[i].rgb),
                          largestTolerance)
                    << reader << " frame " << i;
            }
        }
    }

    // Both readers count the frames; for files whose delays depend on timing.
    void expectFrameCount(std::size_t count)
    {
        EXPECT_EQ(GIFReadBack::withGiflib(file()).frames.size(), count);
        EXPECT_EQ(GIFReadBack::withImageMagick(file()).frames.size(), count);
    }

    // A file of header and trailer only: giflib's reader goes through it to
    // the end and finds no image (DGifSlurp refuses such files, giftext reads them).
    void expectReadableWithoutImages()
    {
        const std::string dump = GIFReadBack::giftext(file());
        EXPECT_NE(dump.find("GIF file terminated normally"), std::string::npos) << dump;
        EXPECT_EQ(dump.find("Image #"), std::string::npos) << dump;
    }

    std::filesystem::path dir_;
};

TEST_F(GIFWriterTest, WritesHeaderOneRecordAndTrailerForOneFrame)
{
    const Image frame = TestImages::gradient(40, 30, 1);
    GIFWriter writer(file(), 40, 30, 8);
    ASSERT_TRUE(writer.add(frame, 1.0));
    const auto stats = writer.finish(1.37);

    const auto bytes = GIFReadBack::readFile(file());
    ASSERT_GT(bytes.size(), 32u + 8u + 10u + 1u);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + 32), expectedHeader(40, 30));
    const std::vector<std::uint8_t> control(bytes.begin() + 32, bytes.begin() + 40);
    EXPECT_EQ(control, (std::vector<std::uint8_t>{0x21, 0xF9, 0x04, 0x04, 37, 0, 0, 0}));
    EXPECT_EQ(bytes[40], 0x2C);
    EXPECT_EQ(bytes.back(), 0x3B);
    EXPECT_EQ(stats.framesWritten, 1);
    EXPECT_EQ(stats.framesDropped, 0);
    EXPECT_EQ(stats.bytes, std::int64_t(bytes.size()) - 32 - 1);

    Canvas canvas(40, 30);
    canvas.paint(frame, 0, 0);
    expectReadBack({{37, canvas.rgb()}}, 40, 30, 6.0, 48);
}

TEST_F(GIFWriterTest, LastFrameLastsAtLeastTwoCentiseconds)
{
    const Image frame = numbered(1);
    GIFWriter writer(file(), 16, 12, 8);
    ASSERT_TRUE(writer.add(frame, 5.0));
    writer.finish(0);

    Canvas canvas(16, 12);
    canvas.paint(frame, 0, 0);
    expectReadBack({{2, canvas.rgb()}}, 16, 12);
}

TEST_F(GIFWriterTest, WritesOnlyHeaderAndTrailerWithoutFrames)
{
    GIFWriter writer(file(), 320, 200, 8);
    const auto stats = writer.finish(3.0);

    auto expected = expectedHeader(320, 200);
    expected.push_back(0x3B);
    EXPECT_EQ(GIFReadBack::readFile(file()), expected);
    EXPECT_EQ(stats, GIFWriter::Stats{});
    expectReadableWithoutImages();
}

TEST_F(GIFWriterTest, WritesLowSixteenBitsOfScreenSize)
{
    GIFWriter writer(file(), 0x10005, 0x20007, 8);
    writer.finish(0);

    const auto bytes = GIFReadBack::readFile(file());
    ASSERT_GE(bytes.size(), 10u);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin() + 6, bytes.begin() + 10),
              (std::vector<std::uint8_t>{0x05, 0x00, 0x07, 0x00}));
}

TEST_F(GIFWriterTest, RefusesFrameWhoseTimeDoesNotAdvanceWithoutCountingItDropped)
{
    GIFWriter writer(file(), 16, 12, 8);
    EXPECT_TRUE(writer.add(numbered(1), 0.5));
    EXPECT_FALSE(writer.add(numbered(2), 0.5));
    EXPECT_FALSE(writer.addRegion(numbered(3), 0, 0, 0.4));
    const auto stats = writer.finish(1.0);

    EXPECT_EQ(stats.framesWritten, 1);
    EXPECT_EQ(stats.framesDropped, 0);
    Canvas canvas(16, 12);
    canvas.paint(numbered(1), 0, 0);
    expectReadBack({{50, canvas.rgb()}}, 16, 12);
}

TEST_F(GIFWriterTest, CarriesTheDebtOfTheTwoCentisecondFloorIntoALaterGap)
{
    GIFWriter writer(file(), 16, 12, 8);
    std::vector<double> times;
    for (int i = 0; i < 5; ++i)
        times.push_back(i * 0.014);
    times.push_back(times.back() + 1.0);
    for (std::size_t i = 0; i < times.size(); ++i)
        ASSERT_TRUE(writer.add(numbered(int(i)), times[i]));
    writer.finish(times.back() + 0.5);

    // Each 1.4 cs step is written as 2, a debt of 0.6 a frame; after four the
    // debt of 2.4 makes the 100 cs gap 97.6, rounded to 98.
    std::vector<ExpectedFrame> expected;
    Canvas canvas(16, 12);
    const int delays[] = {2, 2, 2, 2, 98, 50};
    for (int i = 0; i < 6; ++i) {
        canvas.paint(numbered(i), 0, 0);
        expected.push_back({delays[i], canvas.rgb()});
    }
    expectReadBack(expected, 16, 12);
}

TEST_F(GIFWriterTest, NeverWritesLessThanTwoCentisecondsWhileTheDebtIsLarger)
{
    // Enough slots for every frame, so none can be refused however slow the coding.
    GIFWriter writer(file(), 16, 12, 32);
    std::vector<double> times;
    for (int i = 0; i < 10; ++i)
        times.push_back(i * 0.014);
    times.push_back(times.back() + 0.03);
    for (std::size_t i = 0; i < times.size(); ++i)
        ASSERT_TRUE(writer.add(numbered(int(i)), times[i]));
    writer.finish(times.back() + 0.1);

    // After nine floors the debt is 5.4; the 3 cs gap still gets 2 (debt now
    // 4.4), and the last 10 cs come out as 5.6, rounded to 6.
    std::vector<int> delays(10, 2);
    delays.push_back(6);
    std::vector<ExpectedFrame> expected;
    for (int d : delays)
        expected.push_back({d, {}});
    expectReadBack(expected, 16, 12);
}

TEST_F(GIFWriterTest, ClampsAGapOfMoreThan65535CentisecondsButCarriesTheUnclampedRemainder)
{
    GIFWriter writer(file(), 16, 12, 8);
    ASSERT_TRUE(writer.add(numbered(1), 0.0));
    ASSERT_TRUE(writer.add(numbered(2), 700.004));
    writer.finish(700.504);

    // 70000.4 cs is written as 65535; the remainder carried is 0.4, not the
    // 4465.4 that a carried clamp would leave, so the last frame is 50.
    Canvas canvas(16, 12);
    canvas.paint(numbered(1), 0, 0);
    const auto first = canvas.rgb();
    canvas.paint(numbered(2), 0, 0);
    expectReadBack({{65535, first}, {50, canvas.rgb()}}, 16, 12);
}

TEST_F(GIFWriterTest, WritesOneRecordLastingToTheEndWhenNothingChangesAfterTheFirstFrame)
{
    const Image frame = TestImages::gradient(32, 24, 2);
    GIFWriter writer(file(), 32, 24, 8);
    ASSERT_TRUE(writer.add(frame, 0.0, Rect{3, 3, 0, 0}));
    ASSERT_TRUE(writer.add(TestImages::gradient(32, 24, 3), 0.1, Rect{5, 5, 0, 0}));
    ASSERT_TRUE(writer.add(TestImages::gradient(32, 24, 4), 0.2, Rect{0, 0, 10, 0}));
    ASSERT_TRUE(writer.add(TestImages::gradient(32, 24, 5), 0.3, Rect{40, 40, 5, 5}));
    const auto stats = writer.finish(1.25);

    EXPECT_EQ(stats.framesWritten, 1);
    Canvas canvas(32, 24);
    canvas.paint(frame, 0, 0);
    expectReadBack({{125, canvas.rgb()}}, 32, 24, 6.0, 48);
}

TEST_F(GIFWriterTest, CodesTheChangedRectangleRoundedOutwardAndClippedToTheScreen)
{
    const Image first = TestImages::gradient(48, 32, 1);
    const Image second = TestImages::gradient(48, 32, 7);
    GIFWriter writer(file(), 48, 32, 8);
    // The first frame is whole whatever `changed` says.
    ASSERT_TRUE(writer.add(first, 0.0, Rect{4, 4, 2, 2}));
    ASSERT_TRUE(writer.add(second, 0.5, Rect{10.5, 20.2, 50.0, 3.3}));
    writer.finish(1.0);

    const auto giflib = GIFReadBack::withGiflib(file());
    ASSERT_EQ(giflib.frames.size(), 2u);
    EXPECT_EQ(giflib.frames[0].left, 0);
    EXPECT_EQ(giflib.frames[0].width, 48);
    EXPECT_EQ(giflib.frames[0].height, 32);
    EXPECT_EQ(giflib.frames[1].left, 10);
    EXPECT_EQ(giflib.frames[1].top, 20);
    EXPECT_EQ(giflib.frames[1].width, 38);
    EXPECT_EQ(giflib.frames[1].height, 4);

    Canvas canvas(48, 32);
    canvas.paint(first, 0, 0);
    const auto before = canvas.rgb();
    canvas.paint(*second.cropped({10, 20, 38, 4}), 10, 20);
    expectReadBack({{50, before}, {50, canvas.rgb()}}, 48, 32, 6.0, 48);
}

TEST_F(GIFWriterTest, PaintsRegionsWhereTheyAreGivenOverThePictureThatStands)
{
    const Image background = TestImages::gradient(64, 48, 0);
    const Image a = TestImages::solid(10, 6, 250, 20, 20);
    const Image b = TestImages::gradient(20, 16, 9);
    GIFWriter writer(file(), 64, 48, 8);
    ASSERT_TRUE(writer.addRegion(background, 0, 0, 1.0));
    ASSERT_TRUE(writer.addRegion(a, 50, 40, 1.2));
    ASSERT_TRUE(writer.addRegion(b, 5, 30, 1.25));
    const auto stats = writer.finish(2.0);

    EXPECT_EQ(stats.framesWritten, 3);
    Canvas canvas(64, 48);
    std::vector<ExpectedFrame> expected;
    canvas.paint(background, 0, 0);
    expected.push_back({20, canvas.rgb()});
    canvas.paint(a, 50, 40);
    expected.push_back({5, canvas.rgb()});
    canvas.paint(b, 5, 30);
    expected.push_back({75, canvas.rgb()});
    expectReadBack(expected, 64, 48, 6.0, 48);
}

TEST_F(GIFWriterTest, WritesFramesInIndexOrderWhenALaterFrameIsCodedFirst)
{
    Gate fourthCoded;
    std::mutex orderMutex;
    std::vector<int> codingOrder;
    const OneImageGIFCoder real;
    auto coder = [&](const Image &image) {
        const int number = frameNumberOf(image);
        if (number == 3)
            fourthCoded.wait();
        auto gif = real.encode(image);
        {
            std::lock_guard lock(orderMutex);
            codingOrder.push_back(number);
        }
        if (number == 4)
            fourthCoded.open();
        return gif;
    };

    GIFWriter writer(file(), 16, 12, 8, coder);
    for (int i = 0; i < 6; ++i)
        ASSERT_TRUE(writer.add(numbered(i), 0.1 * i));
    const auto stats = writer.finish(1.0);

    const auto three = std::find(codingOrder.begin(), codingOrder.end(), 3);
    const auto four = std::find(codingOrder.begin(), codingOrder.end(), 4);
    ASSERT_NE(three, codingOrder.end());
    EXPECT_LT(four, three) << "frame 4 should have been coded before frame 3";
    EXPECT_EQ(stats.framesWritten, 6);

    Canvas canvas(16, 12);
    std::vector<ExpectedFrame> expected;
    for (int i = 0; i < 6; ++i) {
        canvas.paint(numbered(i), 0, 0);
        expected.push_back({i == 5 ? 50 : 10, canvas.rgb()});
    }
    expectReadBack(expected, 16, 12);
}

TEST_F(GIFWriterTest, RefusesAndCountsFramesBeyondTheSlotsWhileTheEncoderStalls)
{
    Gate release;
    std::atomic<int> coded = 0;
    const OneImageGIFCoder real;
    auto coder = [&](const Image &image) {
        release.wait();
        ++coded;
        return real.encode(image);
    };

    GIFWriter writer(file(), 16, 12, 8, coder);
    // The first frame takes no slot; the next eight take all eight.
    for (int i = 0; i < 9; ++i)
        EXPECT_TRUE(writer.add(numbered(i), 0.1 * i)) << "frame " << i;
    EXPECT_FALSE(writer.add(numbered(9), 0.9));
    EXPECT_FALSE(writer.addRegion(numbered(10), 0, 0, 1.0));
    EXPECT_EQ(coded.load(), 0);
    release.open();
    const auto stats = writer.finish(2.0);

    EXPECT_EQ(stats.framesDropped, 2);
    EXPECT_EQ(stats.framesWritten, 9);
    Canvas canvas(16, 12);
    std::vector<ExpectedFrame> expected;
    for (int i = 0; i < 9; ++i) {
        canvas.paint(numbered(i), 0, 0);
        // Dropped frames leave no time behind: the last accepted one runs to the end.
        expected.push_back({i == 8 ? 120 : 10, canvas.rgb()});
    }
    expectReadBack(expected, 16, 12);
}

TEST_F(GIFWriterTest, AcceptsFramesAgainOnceTheEncoderCatchesUp)
{
    GIFWriter writer(file(), 16, 12, 1);
    ASSERT_TRUE(writer.add(numbered(0), 0.0));
    int accepted = 1;
    // With one slot, frames are refused while one is coding; in time one is
    // accepted again. Each try is a frame of its own time, as a capture would be.
    double t = 0.0;
    for (int i = 0; i < 2000 && accepted < 3; ++i) {
        t += 0.01;
        if (writer.add(numbered(accepted), t))
            ++accepted;
        else
            std::this_thread::yield();
    }
    const auto stats = writer.finish(t + 0.1);
    EXPECT_EQ(accepted, 3);
    EXPECT_EQ(stats.framesWritten, 3);
    expectFrameCount(3);
}

TEST_F(GIFWriterTest, SkipsAFrameWhoseCodedFormHasNoImageSeparator)
{
    const OneImageGIFCoder real;
    auto coder = [&](const Image &image) -> std::optional<std::vector<std::uint8_t>> {
        if (frameNumberOf(image) == 1) {
            // A logical screen, a comment extension, and the trailer: no image.
            return std::vector<std::uint8_t>{'G', 'I', 'F', '8', '9', 'a', 16, 0, 12, 0, 0, 0, 0,
                                             0x21, 0xFE, 2, 'h', 'i', 0, 0x3B};
        }
        return real.encode(image);
    };
    GIFWriter writer(file(), 16, 12, 8, coder);
    ASSERT_TRUE(writer.add(numbered(0), 0.0));
    ASSERT_TRUE(writer.add(numbered(1), 0.3));
    ASSERT_TRUE(writer.add(numbered(2), 0.5));
    const auto stats = writer.finish(0.6);

    EXPECT_EQ(stats.framesWritten, 2);
    Canvas canvas(16, 12);
    canvas.paint(numbered(0), 0, 0);
    const auto first = canvas.rgb();
    canvas.paint(numbered(2), 0, 0);
    expectReadBack({{50, first}, {10, canvas.rgb()}}, 16, 12);
}

TEST_F(GIFWriterTest, SkipsAFrameTheCoderCannotCode)
{
    const OneImageGIFCoder real;
    auto coder = [&](const Image &image) -> std::optional<std::vector<std::uint8_t>> {
        if (frameNumberOf(image) == 1)
            return std::nullopt;
        return real.encode(image);
    };
    GIFWriter writer(file(), 16, 12, 8, coder);
    ASSERT_TRUE(writer.add(numbered(0), 0.0));
    ASSERT_TRUE(writer.add(numbered(1), 0.3));
    const auto stats = writer.finish(0.6);

    EXPECT_EQ(stats.framesWritten, 1);
    Canvas canvas(16, 12);
    canvas.paint(numbered(0), 0, 0);
    expectReadBack({{60, canvas.rgb()}}, 16, 12);
}

TEST_F(GIFWriterTest, FinishingTwiceWritesNothingMoreAndReturnsZeros)
{
    GIFWriter writer(file(), 16, 12, 8);
    ASSERT_TRUE(writer.add(numbered(1), 0.0));
    const auto first = writer.finish(0.5);
    const auto bytes = GIFReadBack::readFile(file());
    const auto second = writer.finish(9.0);

    EXPECT_EQ(first.framesWritten, 1);
    EXPECT_EQ(second, GIFWriter::Stats{});
    EXPECT_EQ(GIFReadBack::readFile(file()), bytes);
    Canvas canvas(16, 12);
    canvas.paint(numbered(1), 0, 0);
    expectReadBack({{50, canvas.rgb()}}, 16, 12);
}

TEST_F(GIFWriterTest, ReplacesAnExistingFile)
{
    {
        std::ofstream old(file());
        old << std::string(5000, 'x');
    }
    GIFWriter writer(file(), 16, 12, 8);
    writer.finish(0);
    EXPECT_EQ(std::filesystem::file_size(file()), 33u);
    expectReadableWithoutImages();
}

TEST_F(GIFWriterTest, ThrowsWhenTheFileCannotBeCreated)
{
    EXPECT_THROW(GIFWriter(dir_ / "missing" / "out.gif", 16, 12, 8), std::system_error);
}

TEST_F(GIFWriterTest, ThrowsWhenTheHeaderCannotBeWritten)
{
    if (!std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full here";
    EXPECT_THROW(GIFWriter("/dev/full", 16, 12, 8), std::system_error);
}

TEST_F(GIFWriterTest, KeepsManyChangingFramesOfRealContentCloseToTheSource)
{
    const int w = 96, h = 64;
    GIFWriter writer(file(), w, h, 32);
    Canvas canvas(w, h);
    std::vector<ExpectedFrame> expected;
    double t = 0;
    for (int i = 0; i < 12; ++i) {
        const Image full = TestImages::gradient(w, h, i);
        const Rect changed{double(i * 5 % 60), double(i * 3 % 40), 30.0, 20.0};
        ASSERT_TRUE(writer.add(full, t, changed));
        const PixelRect r = i == 0 ? PixelRect{0, 0, w, h} : intersection(integral(changed), {0, 0, w, h});
        canvas.paint(*full.cropped(r), r.x, r.y);
        expected.push_back({i == 11 ? 40 : 7, canvas.rgb()});
        t += 0.0667;
    }
    writer.finish(t - 0.0667 + 0.4);
    // Steps of 6.67 cs with the remainder carried: 7, 6.34 -> 6, 7.01 -> 7, ...
    const int delays[] = {7, 6, 7, 7, 6, 7, 7, 6, 7, 7, 6, 40};
    for (int i = 0; i < 12; ++i)
        expected[std::size_t(i)].delayCentiseconds = delays[i];
    expectReadBack(expected, w, h, 6.0, 48);
}

} // namespace
