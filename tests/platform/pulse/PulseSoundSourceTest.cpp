#include "platform/pulse/PulseSoundSource.h"

#include "PrivatePulse.h"
#include "videowriting/MediaClock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <condition_variable>
#include <mutex>
#include <numbers>

namespace MediaClock = videowriting::MediaClock;
using videowriting::SoundChunk;
using videowriting::SoundSource;

namespace {

// What a source delivered: the chunks' times and sizes, and the samples of
// the first channel.
struct Collected {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<double> times;
    std::vector<int> frames;
    std::vector<float> samples;
    int channels = 0;
    int rate = 0;
    double lastLateness = 0;
    std::string failure;

    SoundSource::OnChunk onChunk()
    {
        return [this](const SoundChunk &chunk) {
            std::lock_guard guard(mutex);
            times.push_back(chunk.seconds);
            frames.push_back(chunk.frames());
            channels = chunk.channels;
            rate = chunk.sampleRate;
            lastLateness = MediaClock::now() - chunk.seconds;
            for (int i = 0; i < chunk.frames(); ++i)
                samples.push_back(chunk.samples[std::size_t(i * chunk.channels)]);
            changed.notify_all();
        };
    }
    SoundSource::OnFailure onFailure()
    {
        return [this](const std::string &why) {
            std::lock_guard guard(mutex);
            failure = why;
            changed.notify_all();
        };
    }
    template <typename Condition>
    bool waitFor(Condition condition, double seconds = 10)
    {
        std::unique_lock guard(mutex);
        return changed.wait_for(guard, std::chrono::duration<double>(seconds), [&] { return condition(*this); });
    }
    double firstLoud(float threshold) const
    {
        // The media clock time of the first sample above `threshold`.
        long long index = 0;
        for (std::size_t c = 0; c < times.size(); ++c)
            for (int i = 0; i < frames[c]; ++i, ++index)
                if (std::abs(samples[std::size_t(index)]) > threshold)
                    return times[c] + double(i) / 48000;
        return -1;
    }
};

double zeroCrossingFrequency(const std::vector<float> &samples, std::size_t from, std::size_t count)
{
    int crossings = 0;
    for (std::size_t i = from + 1; i < from + count && i < samples.size(); ++i)
        if ((samples[i - 1] < 0) != (samples[i] < 0))
            ++crossings;
    return crossings * 48000.0 / 2 / double(count);
}

class PulseSoundSourceTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!pulse.isRunning())
            GTEST_SKIP() << pulse.reason();
    }
    PrivatePulse pulse;
};

float sine(double hertz, long long frame)
{
    return float(0.5 * std::sin(2 * std::numbers::pi * hertz * double(frame) / 48000));
}

} // namespace

TEST_F(PulseSoundSourceTest, SystemSoundIsWhatTheDefaultOutputPlaysInTwoChannels)
{
    PulseSoundSource source(SoundSource::Kind::systemSound, pulse.server());
    Collected collected;
    source.start(collected.onChunk(), collected.onFailure());
    PulsePlayer player(pulse.server(), "speakers", 2);
    ASSERT_TRUE(player.isOpen());
    player.play(1.5, [](long long f) { return sine(440, f); });
    ASSERT_TRUE(collected.waitFor([](Collected &c) { return c.samples.size() > 48000; }));
    source.stop();

    EXPECT_EQ(collected.channels, 2);
    EXPECT_EQ(collected.rate, 48000);
    // Somewhere in the middle, the tone.
    EXPECT_NEAR(zeroCrossingFrequency(collected.samples, collected.samples.size() - 24000, 12000), 440, 5);
}

TEST_F(PulseSoundSourceTest, TheMicrophoneIsTheDefaultInputInOneChannel)
{
    PulseSoundSource source(SoundSource::Kind::microphone, pulse.server());
    Collected collected;
    source.start(collected.onChunk(), collected.onFailure());
    PulsePlayer player(pulse.server(), "microphone", 1);
    player.play(1.5, [](long long f) { return sine(1000, f); });
    ASSERT_TRUE(collected.waitFor([](Collected &c) { return c.samples.size() > 48000; }));
    source.stop();

    EXPECT_EQ(collected.channels, 1);
    EXPECT_NEAR(zeroCrossingFrequency(collected.samples, collected.samples.size() - 24000, 12000), 1000, 5);
}

TEST_F(PulseSoundSourceTest, ChunksFollowEachOtherOnTheMediaClock)
{
    PulseSoundSource source(SoundSource::Kind::systemSound, pulse.server());
    Collected collected;
    source.start(collected.onChunk(), collected.onFailure());
    ASSERT_TRUE(collected.waitFor([](Collected &c) { return c.times.size() > 100; }));
    source.stop();

    std::lock_guard guard(collected.mutex);
    // Each chunk starts where the one before ended, give or take the jitter of
    // the latency measures (less than the 20 ms a sound track takes as
    // seamless), and none is in the future or far in the past.
    for (std::size_t i = 10; i < collected.times.size(); ++i) {
        const double expected = collected.times[i - 1] + collected.frames[i - 1] / 48000.0;
        EXPECT_NEAR(collected.times[i], expected, 0.02) << i;
    }
    // A monitor may hand over a sample a little before the output plays it.
    EXPECT_GT(collected.lastLateness, -0.05);
    EXPECT_LT(collected.lastLateness, 0.2);
}

TEST_F(PulseSoundSourceTest, ASoundIsStampedWithWhenItWasHeard)
{
    PulseSoundSource source(SoundSource::Kind::systemSound, pulse.server());
    Collected collected;
    source.start(collected.onChunk(), collected.onFailure());
    PulsePlayer player(pulse.server(), "speakers", 2);
    // Half a second of silence, then a click of 10 ms, then silence.
    const long long click = 24000;
    player.play(1.0, [click](long long f) { return f >= click && f < click + 480 ? 0.9f : 0.0f; });
    ASSERT_TRUE(collected.waitFor([&](Collected &c) { return c.firstLoud(0.5f) > 0; }));
    source.stop();

    std::lock_guard guard(collected.mutex);
    EXPECT_NEAR(collected.firstLoud(0.5f), player.heardAt(click), 0.015);
}

TEST_F(PulseSoundSourceTest, StopEndsTheChunks)
{
    PulseSoundSource source(SoundSource::Kind::systemSound, pulse.server());
    Collected collected;
    source.start(collected.onChunk(), collected.onFailure());
    ASSERT_TRUE(collected.waitFor([](Collected &c) { return c.times.size() > 3; }));
    source.stop();
    std::size_t count = 0;
    {
        std::lock_guard guard(collected.mutex);
        count = collected.times.size();
    }
    EXPECT_FALSE(collected.waitFor([count](Collected &c) { return c.times.size() > count; }, 0.3));
    // A second stop does nothing.
    source.stop();
}

TEST_F(PulseSoundSourceTest, AServerThatGoesAwaySaysSoOnce)
{
    PulseSoundSource source(SoundSource::Kind::systemSound, pulse.server());
    Collected collected;
    source.start(collected.onChunk(), collected.onFailure());
    ASSERT_TRUE(collected.waitFor([](Collected &c) { return c.times.size() > 3; }));
    pulse.kill();
    ASSERT_TRUE(collected.waitFor([](Collected &c) { return !c.failure.empty(); }));
    EXPECT_NE(collected.failure.find("sound server"), std::string::npos) << collected.failure;
    source.stop();
}

TEST(PulseSoundSource, WithoutAServerItDoesntStart)
{
    PulseSoundSource source(SoundSource::Kind::systemSound, "unix:/nonexistent/glimpso/native");
    try {
        source.start([](const SoundChunk &) {}, [](const std::string &) {});
        FAIL() << "started";
    } catch (const std::runtime_error &error) {
        EXPECT_NE(std::string(error.what()).find("No sound server"), std::string::npos) << error.what();
    }
}
