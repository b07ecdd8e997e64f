#include "videowriting/VideoWriter.h"

#include <gtest/gtest.h>

using videowriting::VideoWriter;

namespace {
VideoWriter::Options sized(int width, int height, int fps, VideoWriter::Codec codec)
{
    VideoWriter::Options options;
    options.width = width;
    options.height = height;
    options.framesPerSecond = fps;
    options.codec = codec;
    return options;
}
} // namespace

TEST(VideoWriter, BitRateOfFullHDByHEVCIsRaisedToTheFloor)
{
    EXPECT_EQ(VideoWriter::bitRate(sized(1920, 1080, 30, VideoWriter::Codec::hevc)), 4'000'000);
}

TEST(VideoWriter, BitRateOfFullHDByH264IsATenthOfAPixelPerPixel)
{
    EXPECT_EQ(VideoWriter::bitRate(sized(1920, 1080, 30, VideoWriter::Codec::h264)), 6'220'800);
}

TEST(VideoWriter, BitRateOfATinyAreaAt15FpsIsTheFloor)
{
    EXPECT_EQ(VideoWriter::bitRate(sized(2, 2, 15, VideoWriter::Codec::h264)), 4'000'000);
    EXPECT_EQ(VideoWriter::bitRate(sized(2, 2, 15, VideoWriter::Codec::hevc)), 4'000'000);
}

TEST(VideoWriter, BitRateOf5KAt60FpsIsTheCeiling)
{
    EXPECT_EQ(VideoWriter::bitRate(sized(5120, 2880, 60, VideoWriter::Codec::h264)), 40'000'000);
    EXPECT_EQ(VideoWriter::bitRate(sized(5120, 2880, 60, VideoWriter::Codec::hevc)), 40'000'000);
}

TEST(VideoWriter, BitRateJustOverTheFloorIsTruncated)
{
    // 1000 × 1000 × 67 × 0.06 = 4,020,000.
    EXPECT_EQ(VideoWriter::bitRate(sized(1000, 1000, 67, VideoWriter::Codec::hevc)), 4'020'000);
    // 641 × 481 × 13 × 0.1 = 400,825.3: below the floor.
    EXPECT_EQ(VideoWriter::bitRate(sized(641, 481, 13, VideoWriter::Codec::h264)), 4'000'000);
    // 2561 × 1441 × 11 × 0.1 = 4,059,441.1
    EXPECT_EQ(VideoWriter::bitRate(sized(2561, 1441, 11, VideoWriter::Codec::h264)), 4'059'441);
}

TEST(VideoWriter, OddSidesLoseTheirLastPixelButNeverGoBelowTwo)
{
    EXPECT_EQ(VideoWriter::encodedSide(1281), 1280);
    EXPECT_EQ(VideoWriter::encodedSide(720), 720);
    EXPECT_EQ(VideoWriter::encodedSide(3), 2);
    EXPECT_EQ(VideoWriter::encodedSide(2), 2);
    EXPECT_EQ(VideoWriter::encodedSide(1), 2);
}

TEST(VideoWriter, CodecsAreStoredByTheirNames)
{
    EXPECT_EQ(VideoWriter::codecName(VideoWriter::Codec::hevc), "hevc");
    EXPECT_EQ(VideoWriter::codecName(VideoWriter::Codec::h264), "h264");
    EXPECT_EQ(VideoWriter::codecFromName("hevc"), VideoWriter::Codec::hevc);
    EXPECT_EQ(VideoWriter::codecFromName("h264"), VideoWriter::Codec::h264);
    EXPECT_EQ(VideoWriter::codecFromName("H264"), std::nullopt);
    EXPECT_EQ(VideoWriter::codecFromName(""), std::nullopt);
}

TEST(VideoWriter, ErrorsCarryTheirTexts)
{
    using Error = VideoWriter::WriterError;
    EXPECT_STREQ(Error::cannotAddInput("video").what(), "The video writer couldn't add its video track.");
    EXPECT_STREQ(Error::cannotStart().what(), "The video writer couldn't start.");
    EXPECT_STREQ(Error::cannotFinish().what(), "The video couldn't be finished.");
    EXPECT_STREQ(Error::noFrames().what(), "Nothing was recorded.");
    EXPECT_EQ(Error::noFrames().which(), Error::Case::noFrames);
    EXPECT_EQ(Error::cannotAddInput("microphone").which(), Error::Case::cannotAddInput);
}
