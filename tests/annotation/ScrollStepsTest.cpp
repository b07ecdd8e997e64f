#include "annotation/ScrollInput.h"
#include "annotation/ScrollSteps.h"

#include <gtest/gtest.h>

using namespace glimpso;

using Phase = ScrollInput::Phase;

TEST(ScrollSteps, ANotchedWheelGivesOneStepBySign)
{
    ScrollSteps steps;
    EXPECT_EQ(steps.wholeSteps({120, false, Phase::none}), 1);
    EXPECT_EQ(steps.wholeSteps({-360, false, Phase::none}), -1);
    EXPECT_EQ(steps.wholeSteps({0, false, Phase::none}), 0);
}

TEST(ScrollSteps, InertiaGivesNothing)
{
    ScrollSteps steps;
    EXPECT_EQ(steps.wholeSteps({120, false, Phase::momentum}), 0);
    EXPECT_EQ(steps.wholeSteps({60, true, Phase::momentum}), 0);
    EXPECT_EQ(steps.gathered(), 0);
}

TEST(ScrollSteps, PreciseTravelGathersSixPointsPerStepAndKeepsTheRest)
{
    ScrollSteps steps;
    EXPECT_EQ(steps.wholeSteps({5, true, Phase::began}), 0);
    EXPECT_EQ(steps.wholeSteps({5, true, Phase::changed}), 1);
    EXPECT_DOUBLE_EQ(steps.gathered(), 4);
    EXPECT_EQ(steps.wholeSteps({14, true, Phase::changed}), 3);
    EXPECT_DOUBLE_EQ(steps.gathered(), 0);
}

TEST(ScrollSteps, PreciseStepsTruncateTowardsZeroBothWays)
{
    ScrollSteps steps;
    EXPECT_EQ(steps.wholeSteps({-13, true, Phase::began}), -2);
    EXPECT_DOUBLE_EQ(steps.gathered(), -1);
    EXPECT_EQ(steps.wholeSteps({2, true, Phase::changed}), 0);
    EXPECT_DOUBLE_EQ(steps.gathered(), 1);
}

TEST(ScrollSteps, AGestureBeginningDropsTheOldRest)
{
    ScrollSteps steps;
    steps.wholeSteps({5, true, Phase::began});
    EXPECT_EQ(steps.wholeSteps({5, true, Phase::began}), 0);
    EXPECT_EQ(steps.wholeSteps({1, true, Phase::changed}), 1);
}

TEST(ScrollInput, WholeNotchesAreANotchedWheel)
{
    const ScrollInput input = ScrollInput::fromWheel({0, -240}, {}, Qt::NoScrollPhase);
    EXPECT_FALSE(input.precise);
    EXPECT_EQ(input.deltaY, -240);
    EXPECT_EQ(input.phase, Phase::none);
}

TEST(ScrollInput, PixelDeltasArePointsOfPreciseTravel)
{
    const ScrollInput input = ScrollInput::fromWheel({0, 120}, {0, 7}, Qt::ScrollBegin);
    EXPECT_TRUE(input.precise);
    EXPECT_EQ(input.deltaY, 7);
    EXPECT_EQ(input.phase, Phase::began);
}

TEST(ScrollInput, HighResolutionWheelCountsSixPointsANotch)
{
    const ScrollInput input = ScrollInput::fromWheel({0, 30}, {}, Qt::NoScrollPhase);
    EXPECT_TRUE(input.precise);
    EXPECT_DOUBLE_EQ(input.deltaY, 1.5);
    ScrollSteps steps;
    int total = 0;
    for (int i = 0; i < 4; ++i)
        total += steps.wholeSteps(input);
    EXPECT_EQ(total, 1); // four quarter notches make one step, like one click
}

TEST(ScrollInput, PhasesMap)
{
    EXPECT_EQ(ScrollInput::fromWheel({}, {0, 1}, Qt::ScrollUpdate).phase, Phase::changed);
    EXPECT_EQ(ScrollInput::fromWheel({}, {0, 1}, Qt::ScrollEnd).phase, Phase::ended);
    EXPECT_EQ(ScrollInput::fromWheel({}, {0, 1}, Qt::ScrollMomentum).phase, Phase::momentum);
}
