#include "videowriting/SoundTimeline.h"

#include <gtest/gtest.h>

using videowriting::SoundTimeline;
using Placement = SoundTimeline::Placement;

TEST(SoundTimeline, DropsEverythingBeforeItStarts)
{
    SoundTimeline timeline(48000);
    EXPECT_EQ(timeline.place(10.0, 480), (Placement{0, 480, 0}));
    EXPECT_EQ(timeline.end(), 0);
}

TEST(SoundTimeline, AChunkWhollyBeforeTheFirstFrameIsDropped)
{
    SoundTimeline timeline(48000);
    timeline.start(10.0);
    EXPECT_EQ(timeline.place(9.0, 480), (Placement{0, 480, 0}));
    EXPECT_EQ(timeline.end(), 0);
}

TEST(SoundTimeline, AChunkAcrossTheFirstFrameLosesItsHead)
{
    SoundTimeline timeline(48000);
    timeline.start(10.0);
    // Starts 5 ms before the first frame: 240 frames early.
    EXPECT_EQ(timeline.place(9.995, 960), (Placement{0, 240, 720}));
    EXPECT_EQ(timeline.end(), 720);
}

TEST(SoundTimeline, AFirstChunkAfterTheStartIsPrecededBySilence)
{
    SoundTimeline timeline(48000);
    timeline.start(10.0);
    EXPECT_EQ(timeline.place(10.1, 480), (Placement{4800, 0, 480}));
    EXPECT_EQ(timeline.end(), 5280);
}

TEST(SoundTimeline, ChunksThatFollowEachOtherJoinWithoutGaps)
{
    SoundTimeline timeline(48000);
    timeline.start(0.0);
    timeline.place(0.0, 480);
    // Times jitter by a few milliseconds either way: still seamless.
    EXPECT_EQ(timeline.place(0.013, 480), (Placement{0, 0, 480}));
    EXPECT_EQ(timeline.place(0.017, 480), (Placement{0, 0, 480}));
    EXPECT_EQ(timeline.end(), 1440);
}

TEST(SoundTimeline, AGapBeyondTheToleranceIsFilledWithSilence)
{
    SoundTimeline timeline(48000);
    timeline.start(0.0);
    timeline.place(0.0, 480);
    // Next chunk half a second late: the source paused.
    EXPECT_EQ(timeline.place(0.51, 480), (Placement{24000, 0, 480}));
    EXPECT_EQ(timeline.end(), 24960);
}

TEST(SoundTimeline, AnOverlapBeyondTheToleranceLosesTheOverlappingHead)
{
    SoundTimeline timeline(48000);
    timeline.start(0.0);
    timeline.place(0.0, 4800);   // up to 0.1 s
    // Comes 50 ms too early: its first 2400 frames lie over what is there.
    EXPECT_EQ(timeline.place(0.05, 4800), (Placement{0, 2400, 2400}));
    EXPECT_EQ(timeline.end(), 7200);
}

TEST(SoundTimeline, AChunkWhollyOverWhatIsThereIsDropped)
{
    SoundTimeline timeline(48000);
    timeline.start(0.0);
    timeline.place(0.0, 48000);
    EXPECT_EQ(timeline.place(0.5, 480), (Placement{0, 480, 0}));
    EXPECT_EQ(timeline.end(), 48000);
}

TEST(SoundTimeline, TheToleranceCanBeChosen)
{
    SoundTimeline timeline(48000, 0);
    timeline.start(0.0);
    timeline.place(0.0, 480);
    EXPECT_EQ(timeline.place(0.0101, 480), (Placement{5, 0, 480}));
}

TEST(SoundTimeline, EmptyChunksChangeNothing)
{
    SoundTimeline timeline(48000);
    timeline.start(0.0);
    EXPECT_EQ(timeline.place(0.0, 0), (Placement{0, 0, 0}));
    EXPECT_EQ(timeline.end(), 0);
}

TEST(SoundTimeline, FrameAtCountsFromTheStart)
{
    SoundTimeline timeline(48000);
    timeline.start(100.0);
    EXPECT_EQ(timeline.frameAt(101.5), 72000);
    EXPECT_EQ(timeline.frameAt(99.0), -48000);
}
