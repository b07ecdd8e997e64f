#include "app/RecordingVerb.h"

#include <gtest/gtest.h>

namespace {
std::optional<RecordingVerb> parse(const QStringList &arguments, QString *error = nullptr)
{
    QString ignored;
    return RecordingVerb::parse(arguments, error ? error : &ignored);
}
} // namespace

TEST(RecordingVerb, VideoOptionsAreReadAfterARectangle)
{
    const auto verb = parse({"--rect", "1280x720+0+0", "--codec", "h264", "--system-audio", "--microphone"});
    ASSERT_TRUE(verb);
    EXPECT_EQ(verb->compatibleCodec, true);
    EXPECT_EQ(verb->systemAudio, true);
    EXPECT_EQ(verb->microphone, true);
    EXPECT_TRUE(verb->hasVideoOptions());
}

TEST(RecordingVerb, HEVCIsTheOtherCodec)
{
    const auto verb = parse({"--rect", "64x64+0+0", "--codec", "hevc"});
    ASSERT_TRUE(verb);
    EXPECT_EQ(verb->compatibleCodec, false);
    EXPECT_FALSE(verb->systemAudio.has_value());
    EXPECT_FALSE(verb->microphone.has_value());
}

TEST(RecordingVerb, WithoutVideoOptionsTheSettingsDecide)
{
    const auto verb = parse({"--rect", "64x64+0+0", "--seconds", "5"});
    ASSERT_TRUE(verb);
    EXPECT_FALSE(verb->hasVideoOptions());
}

TEST(RecordingVerb, AnUnknownCodecIsRefused)
{
    QString error;
    EXPECT_FALSE(parse({"--rect", "64x64+0+0", "--codec", "vp9"}, &error));
    EXPECT_EQ(error, QStringLiteral("glimpso: --codec takes h264 or hevc"));
    EXPECT_FALSE(parse({"--rect", "64x64+0+0", "--codec"}, &error));
    EXPECT_EQ(error, QStringLiteral("glimpso: --codec takes h264 or hevc"));
}

TEST(RecordingVerb, VideoOptionsNeedARectangle)
{
    QString error;
    EXPECT_FALSE(parse({"--system-audio"}, &error));
    EXPECT_EQ(error, QStringLiteral("glimpso: --seconds, --fps, --copy, --save, --wait and the video options need --rect"));
}
