#include "videowriting/FFmpegVideoWriter.h"
#include "videowriting/MediaClock.h"

#include "MediaReadBack.h"
#include "SyntheticScene.h"
#include "WriterFixture.h"

#include <cmath>
#include <future>
#include <thread>

using videowriting::FFmpegVideoWriter;
using videowriting::SoundChunk;
using videowriting::VideoFrame;
using videowriting::VideoWriter;

namespace {

class FFmpegVideoWriterTest : public WriterFixture {
protected:
    // Tests append far faster than a capture stream does; the queue has room
    // for all of it, unless a test is about the queue.
    static FFmpegVideoWriter::Tuning roomy()
    {
        FFmpegVideoWriter::Tuning tuning;
        tuning.maxPendingFrames = 1000;
        tuning.maxPendingWholeFrames = 1000;
        tuning.maxPendingSoundSeconds = 1000;
        return tuning;
    }

    // `count` frames of the scene at `fps`, starting at `start` seconds.
    static void record(VideoWriter &writer, SyntheticScene &scene, int count, int fps, double start = 100.0)
    {
        for (int i = 0; i < count; ++i)
            writer.append(scene.frame(i, start + double(i) / fps));
    }

    // Sound of `hertz` from `from` to `to` seconds, in chunks of 10 ms.
    static void tone(VideoWriter &writer, double hertz, double from, double to, int channels = 2,
                     bool microphone = false)
    {
        const int chunk = 480;
        for (std::int64_t at = std::llround(from * 48000); at < std::llround(to * 48000); at += chunk) {
            const std::vector<float> samples = SyntheticScene::tone(hertz, channels, at, chunk);
            writer.appendAudio(SoundChunk{samples, channels, 48000, double(at) / 48000}, microphone);
        }
    }
};

} // namespace

TEST_F(FFmpegVideoWriterTest, WritesH264WithEveryFrameAtTheGivenSize)
{
    SyntheticScene scene(320, 240);
    FFmpegVideoWriter writer(folder / "a.mp4", options(320, 240), roomy());
    record(writer, scene, 60, 30);
    const VideoWriter::Stats stats = writer.finish(102.0);

    EXPECT_EQ(stats, (VideoWriter::Stats{60, 0}));
    const auto facts = MediaReadBack::probe(folder / "a.mp4");
    ASSERT_NE(facts.video(), nullptr);
    EXPECT_EQ(facts.video()->codec, "h264");
    EXPECT_EQ(facts.video()->width, 320);
    EXPECT_EQ(facts.video()->height, 240);
    EXPECT_EQ(facts.video()->packets, 60);
    EXPECT_NEAR(facts.video()->end - facts.video()->start, 2.0, 0.001);
    EXPECT_TRUE(facts.sound().empty());
    EXPECT_EQ(MediaReadBack::ffmpegErrors(folder / "a.mp4"), "");
}

TEST_F(FFmpegVideoWriterTest, WritesHEVC)
{
    SyntheticScene scene(256, 144);
    FFmpegVideoWriter writer(folder / "h.mp4", options(256, 144, 30, VideoWriter::Codec::hevc), roomy());
    record(writer, scene, 15, 30);
    writer.finish(100.5);

    const auto facts = MediaReadBack::probe(folder / "h.mp4");
    ASSERT_NE(facts.video(), nullptr);
    EXPECT_EQ(facts.video()->codec, "hevc");
    EXPECT_EQ(facts.video()->packets, 15);
    EXPECT_EQ(MediaReadBack::ffmpegErrors(folder / "h.mp4"), "");
}

TEST_F(FFmpegVideoWriterTest, DecodedPicturesShowTheFrames)
{
    SyntheticScene scene(320, 240);
    FFmpegVideoWriter writer(folder / "p.mp4", options(320, 240), roomy());
    record(writer, scene, 30, 30);
    writer.finish(101.0);

    int index = 0;
    MediaReadBack::decodeVideo(folder / "p.mp4", [&](const MediaReadBack::Picture &picture) {
        const int y = 120;
        const int square = scene.squareX(index) + SyntheticScene::squareSize / 2;
        EXPECT_NEAR(picture.lumaAt(square, y), 235, 12) << "frame " << index;
        // Grey desktop (80) is 85 in limited range.
        EXPECT_NEAR(picture.lumaAt((square + 160) % 320, y), 85, 12) << "frame " << index;
        EXPECT_NEAR(picture.seconds - index / 30.0, 0.0, 0.001);
        ++index;
    });
    EXPECT_EQ(index, 30);
}

TEST_F(FFmpegVideoWriterTest, AnOddSizeLosesItsLastColumnAndRow)
{
    SyntheticScene scene(321, 241);
    FFmpegVideoWriter writer(folder / "o.mp4", options(321, 241), roomy());
    record(writer, scene, 3, 30);
    writer.finish(100.1);
    const auto facts = MediaReadBack::probe(folder / "o.mp4");
    ASSERT_NE(facts.video(), nullptr);
    EXPECT_EQ(facts.video()->width, 320);
    EXPECT_EQ(facts.video()->height, 240);
}

TEST_F(FFmpegVideoWriterTest, AnUnchangedFrameRepeatsThePictureThatStands)
{
    SyntheticScene scene(320, 240);
    FFmpegVideoWriter writer(folder / "u.mp4", options(320, 240), roomy());
    writer.append(scene.frame(0, 10.0));
    writer.append(scene.frame(5, 10.0 + 1 / 30.0));
    // Nothing changed: the pixels behind the frame aren't even looked at.
    VideoFrame same = scene.unchanged(10.0 + 2 / 30.0);
    std::vector<std::uint8_t> garbage(scene.pixels().size(), 0);
    same.bgra = garbage.data();
    writer.append(same);
    writer.append(scene.unchanged(10.1));
    EXPECT_EQ(writer.finish(10.0 + 4 / 30.0), (VideoWriter::Stats{4, 0}));

    std::vector<int> squareLuma;
    MediaReadBack::decodeVideo(folder / "u.mp4", [&](const MediaReadBack::Picture &p) {
        squareLuma.push_back(p.lumaAt(scene.squareX(5) + 16, 120));
    });
    ASSERT_EQ(squareLuma.size(), 4u);
    EXPECT_NEAR(squareLuma[2], 235, 12);
    EXPECT_NEAR(squareLuma[3], 235, 12);
}

TEST_F(FFmpegVideoWriterTest, OnlyTheChangedRectanglesReachThePicture)
{
    SyntheticScene scene(320, 240);
    FFmpegVideoWriter writer(folder / "r.mp4", options(320, 240), roomy());
    writer.append(scene.frame(0, 1.0));
    // The next frame claims only a rectangle at the left changed; the square
    // drawn elsewhere in its pixels is not taken.
    VideoFrame next = scene.frame(40, 1.0 + 1 / 30.0);
    next.changedRects = std::vector<videowriting::PixelRect>{{0, 200, 10, 10}};
    writer.append(next);
    writer.finish(1.0 + 2 / 30.0);

    std::vector<int> atNewSquare;
    MediaReadBack::decodeVideo(folder / "r.mp4", [&](const MediaReadBack::Picture &p) {
        atNewSquare.push_back(p.lumaAt(scene.squareX(40) + 16, 120));
    });
    ASSERT_EQ(atNewSquare.size(), 2u);
    EXPECT_NEAR(atNewSquare[1], 85, 12);
}

TEST_F(FFmpegVideoWriterTest, FinishWithoutFramesSaysNothingWasRecordedAndLeavesNoFile)
{
    FFmpegVideoWriter writer(folder / "n.mp4", options(64, 64), roomy());
    EXPECT_TRUE(std::filesystem::exists(folder / "n.mp4"));
    try {
        writer.finish(1.0);
        FAIL() << "no error";
    } catch (const VideoWriter::WriterError &error) {
        EXPECT_EQ(error.which(), VideoWriter::WriterError::Case::noFrames);
        EXPECT_STREQ(error.what(), "Nothing was recorded.");
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "n.mp4"));
}

TEST_F(FFmpegVideoWriterTest, FinishTwiceGivesTheStatsAndDoesNothingElse)
{
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "t.mp4", options(64, 64), roomy());
    record(writer, scene, 5, 30);
    const auto first = writer.finish(100.2);
    const auto size = std::filesystem::file_size(folder / "t.mp4");
    const auto time = std::filesystem::last_write_time(folder / "t.mp4");
    EXPECT_EQ(writer.finish(200.0), first);
    EXPECT_EQ(std::filesystem::file_size(folder / "t.mp4"), size);
    EXPECT_EQ(std::filesystem::last_write_time(folder / "t.mp4"), time);
}

TEST_F(FFmpegVideoWriterTest, CancelAfterFinishLeavesTheFile)
{
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "c.mp4", options(64, 64), roomy());
    record(writer, scene, 5, 30);
    writer.finish(100 + 5 / 30.0);
    writer.cancel();
    EXPECT_TRUE(std::filesystem::exists(folder / "c.mp4"));
    EXPECT_EQ(MediaReadBack::probe(folder / "c.mp4").video()->packets, 5);
}

TEST_F(FFmpegVideoWriterTest, CancelRemovesTheFile)
{
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "x.mp4", options(64, 64), roomy());
    record(writer, scene, 5, 30);
    writer.cancel();
    EXPECT_FALSE(std::filesystem::exists(folder / "x.mp4"));
    // And a finish after it has nothing more to say.
    EXPECT_EQ(writer.finish(1.0).videoFrames, 5);
}

TEST_F(FFmpegVideoWriterTest, AFrameAfterFinishIsIgnoredAndNotCounted)
{
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "l.mp4", options(64, 64), roomy());
    record(writer, scene, 5, 30);
    writer.finish(100 + 5 / 30.0);
    writer.append(scene.frame(6, 100.3));
    tone(writer, 440, 100.3, 100.4);
    EXPECT_EQ(writer.finish(100.5), (VideoWriter::Stats{5, 0}));
    EXPECT_EQ(MediaReadBack::probe(folder / "l.mp4").video()->packets, 5);
}

TEST_F(FFmpegVideoWriterTest, AFrameWhoseTimeDoesNotAdvanceIsDropped)
{
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "d.mp4", options(64, 64), roomy());
    writer.append(scene.frame(0, 5.0));
    writer.append(scene.frame(1, 5.0));
    writer.append(scene.frame(2, 4.9));
    writer.append(scene.frame(3, 5.1));
    EXPECT_EQ(writer.finish(5.2), (VideoWriter::Stats{2, 2}));
}

TEST_F(FFmpegVideoWriterTest, FramesTheWriterCantTakeNowAreDroppedAndCounted)
{
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    FFmpegVideoWriter::Tuning tuning;
    tuning.maxPendingFrames = 2;
    tuning.beforePicture = [released] { released.wait(); };
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "q.mp4", options(64, 64), tuning);
    // The first frame is held on the writer's thread, one more waits: the rest find no room.
    record(writer, scene, 10, 30);
    release.set_value();
    EXPECT_EQ(writer.finish(100 + 2 / 30.0), (VideoWriter::Stats{2, 8}));
    EXPECT_EQ(MediaReadBack::probe(folder / "q.mp4").video()->packets, 2);
}

TEST_F(FFmpegVideoWriterTest, AppendNeverWaitsForTheEncoder)
{
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    FFmpegVideoWriter::Tuning tuning;
    tuning.beforePicture = [released] { released.wait(); };
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "w.mp4", options(64, 64), tuning);
    // With the encoder stuck, a hundred frames still come back at once.
    auto appending = std::async(std::launch::async, [&] { record(writer, scene, 100, 30); });
    EXPECT_EQ(appending.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    release.set_value();
    const auto stats = writer.finish(104.0);
    EXPECT_EQ(stats.videoFrames + stats.droppedFrames, 100);
    EXPECT_GT(stats.droppedFrames, 0);
}

TEST_F(FFmpegVideoWriterTest, FrameTimesOfAStillScreenRepeatThePictureAsTheyPass)
{
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "g.mp4", options(64, 64), roomy());
    // A stream on the media clock: nothing changes for 0.8 s between two frames.
    const double start = videowriting::MediaClock::now();
    writer.append(scene.frame(0, start));
    std::this_thread::sleep_for(std::chrono::milliseconds(800));
    writer.append(scene.frame(1, start + 0.8));
    EXPECT_EQ(writer.finish(start + 0.8 + 1 / 30.0), (VideoWriter::Stats{2, 0}));

    std::vector<double> times;
    std::vector<int> square;
    MediaReadBack::decodeVideo(folder / "g.mp4", [&](const MediaReadBack::Picture &p) {
        times.push_back(p.seconds);
        square.push_back(p.lumaAt(scene.squareX(0) + 2, 32));
    });
    ASSERT_EQ(times.size(), 25u);
    for (std::size_t i = 1; i < times.size(); ++i)
        EXPECT_NEAR(times[i] - times[i - 1], 1 / 30.0, 0.002) << i;
    // The repeats show the first frame's picture until the second frame.
    EXPECT_NEAR(square[20], 235, 12);
}

TEST_F(FFmpegVideoWriterTest, FinishRepeatsThePictureUpToTheEnd)
{
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "f.mp4", options(64, 64), roomy());
    writer.append(scene.frame(0, 20.0));
    writer.finish(20.5);
    const auto facts = MediaReadBack::probe(folder / "f.mp4");
    EXPECT_EQ(facts.video()->packets, 15);
    EXPECT_NEAR(facts.video()->duration, 0.5, 0.001);
}

TEST_F(FFmpegVideoWriterTest, ALongGapOfDroppedFramesIsNotMadeUp)
{
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "d.mp4", options(64, 64), roomy());
    // A second between frames handed over at once: the writer was behind,
    // not the screen still. 0.4 s of it is made up, the rest is one long frame.
    writer.append(scene.frame(0, 20.0));
    writer.append(scene.frame(1, 21.0));
    writer.finish(21.0 + 1 / 30.0);
    const auto facts = MediaReadBack::probe(folder / "d.mp4");
    EXPECT_EQ(facts.video()->packets, 1 + 12 + 1);
    EXPECT_NEAR(facts.video()->duration, 1.0 + 1 / 30.0, 0.001);
}

TEST_F(FFmpegVideoWriterTest, TheLastFrameLastsUntilTheEnd)
{
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "e.mp4", options(64, 64), roomy());
    record(writer, scene, 10, 30, 50.0);
    writer.finish(52.0);
    const auto facts = MediaReadBack::probe(folder / "e.mp4");
    EXPECT_NEAR(facts.video()->duration, 2.0, 0.001);
    EXPECT_NEAR(facts.duration, 2.0, 0.001);
}

TEST_F(FFmpegVideoWriterTest, SystemSoundIsATwoChannelAACTrackAt48kHz)
{
    auto o = options(64, 64);
    o.systemAudio = true;
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "s.mp4", o, roomy());
    EXPECT_TRUE(writer.hasSystemAudioTrack());
    EXPECT_FALSE(writer.hasMicrophoneTrack());
    writer.append(scene.frame(0, 10.0));
    tone(writer, 440, 10.0, 12.0);
    for (int i = 1; i < 60; ++i)
        writer.append(scene.frame(i, 10.0 + i / 30.0));
    writer.finish(12.0);

    const auto facts = MediaReadBack::probe(folder / "s.mp4");
    ASSERT_EQ(facts.sound().size(), 1u);
    const auto &sound = *facts.sound()[0];
    EXPECT_EQ(sound.codec, "aac");
    EXPECT_EQ(sound.channels, 2);
    EXPECT_EQ(sound.sampleRate, 48000);
    EXPECT_NEAR(sound.end - facts.video()->start, 2.0, 0.03);
    const auto decoded = MediaReadBack::decodeSound(folder / "s.mp4");
    EXPECT_EQ(MediaReadBack::dominantFrequency(decoded.samples, decoded.sampleRate), 440);
    EXPECT_EQ(MediaReadBack::ffmpegErrors(folder / "s.mp4"), "");
}

TEST_F(FFmpegVideoWriterTest, TheMicrophoneIsAOneChannelTrackBesideTheSystemSound)
{
    auto o = options(64, 64);
    o.systemAudio = true;
    o.microphone = true;
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "m.mp4", o, roomy());
    writer.append(scene.frame(0, 0.0));
    tone(writer, 440, 0.0, 1.0);
    tone(writer, 1000, 0.0, 1.0, 1, true);
    for (int i = 1; i < 30; ++i)
        writer.append(scene.frame(i, i / 30.0));
    writer.finish(1.0);

    const auto facts = MediaReadBack::probe(folder / "m.mp4");
    ASSERT_EQ(facts.sound().size(), 2u);
    EXPECT_EQ(facts.sound()[0]->channels, 2);
    EXPECT_EQ(facts.sound()[1]->channels, 1);
    const auto system = MediaReadBack::decodeSound(folder / "m.mp4", 0);
    const auto microphone = MediaReadBack::decodeSound(folder / "m.mp4", 1);
    EXPECT_EQ(MediaReadBack::dominantFrequency(system.samples, 48000), 440);
    EXPECT_EQ(MediaReadBack::dominantFrequency(microphone.samples, 48000), 1000);
}

TEST_F(FFmpegVideoWriterTest, SoundFromBeforeTheFirstFrameIsDropped)
{
    auto o = options(64, 64);
    o.systemAudio = true;
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "b.mp4", o, roomy());
    // Before the first frame: a high tone, not in the file.
    tone(writer, 3000, 9.0, 10.0);
    writer.append(scene.frame(0, 10.0));
    // Late-reported chunks that were heard before the first frame: dropped too.
    tone(writer, 3000, 9.5, 10.0);
    tone(writer, 440, 10.0, 11.0);
    for (int i = 1; i < 30; ++i)
        writer.append(scene.frame(i, 10.0 + i / 30.0));
    writer.finish(11.0);

    const auto decoded = MediaReadBack::decodeSound(folder / "b.mp4");
    ASSERT_GT(decoded.samples.size(), 48000u / 2);
    // Half a second from the start holds only the low tone.
    const std::vector<float> head(decoded.samples.begin(), decoded.samples.begin() + 24000);
    EXPECT_EQ(MediaReadBack::dominantFrequency(head, 48000), 440);
    const auto facts = MediaReadBack::probe(folder / "b.mp4");
    EXPECT_NEAR(facts.sound()[0]->end - facts.video()->start, 1.0, 0.03);
}

TEST_F(FFmpegVideoWriterTest, MissingSoundIsSilenceUpToTheEnd)
{
    auto o = options(64, 64);
    o.systemAudio = true;
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "z.mp4", o, roomy());
    record(writer, scene, 30, 30, 0.0);
    tone(writer, 440, 0.2, 0.4);
    writer.finish(1.0);
    const auto facts = MediaReadBack::probe(folder / "z.mp4");
    ASSERT_EQ(facts.sound().size(), 1u);
    EXPECT_NEAR(facts.sound()[0]->end - facts.video()->start, 1.0, 0.03);
    const auto decoded = MediaReadBack::decodeSound(folder / "z.mp4");
    // Loudest sample in a span of the recording's time.
    const auto loudest = [&](double from, double to) {
        float level = 0;
        for (std::size_t i = 0; i < decoded.samples.size(); ++i) {
            const double t = decoded.start + double(i) / 48000 - facts.video()->start;
            if (t >= from && t < to)
                level = std::max(level, std::abs(decoded.samples[i]));
        }
        return level;
    };
    EXPECT_LT(loudest(0.0, 0.15), 0.01);
    EXPECT_GT(loudest(0.25, 0.35), 0.3);
    EXPECT_LT(loudest(0.5, 1.0), 0.01);
}

TEST_F(FFmpegVideoWriterTest, SoundAndPicturesStayInStep)
{
    auto o = options(64, 64);
    o.systemAudio = true;
    SyntheticScene scene(64, 64);
    FFmpegVideoWriter writer(folder / "sync.mp4", o, roomy());
    // A white frame at 21 s, and a beep that starts at the same instant.
    const std::vector<std::uint8_t> white(scene.pixels().size(), 0xFF);
    for (int i = 0; i < 60; ++i) {
        VideoFrame frame = scene.frame(i, 20.0 + i / 30.0);
        if (i == 30)
            frame.bgra = white.data();
        if (i == 30 || i == 31)
            frame.changedRects.reset();
        writer.append(frame);
    }
    for (std::int64_t at = 20 * 48000; at < 22 * 48000; at += 480) {
        std::vector<float> samples = SyntheticScene::tone(1000, 2, at, 480);
        if (at < 21 * 48000 || at >= std::int64_t(21.1 * 48000))
            std::fill(samples.begin(), samples.end(), 0.0f);
        writer.appendAudio(SoundChunk{samples, 2, 48000, double(at) / 48000}, false);
    }
    writer.finish(22.0);

    double flash = -1;
    MediaReadBack::decodeVideo(folder / "sync.mp4", [&](const MediaReadBack::Picture &p) {
        if (flash < 0 && p.lumaAt(32, 50) > 200 && p.lumaAt(2, 60) > 200)
            flash = p.seconds;
    });
    const auto decoded = MediaReadBack::decodeSound(folder / "sync.mp4");
    double beep = -1;
    for (std::size_t i = 0; i < decoded.samples.size() && beep < 0; ++i)
        if (std::abs(decoded.samples[i]) > 0.25 && double(i) / 48000 > 0.5)
            beep = decoded.start + double(i) / 48000;
    ASSERT_GE(flash, 0);
    ASSERT_GE(beep, 0);
    EXPECT_NEAR(beep - flash, 0.0, 0.005);
}
