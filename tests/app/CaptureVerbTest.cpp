#include "app/CaptureVerb.h"

#include <gtest/gtest.h>

TEST(CaptureVerb, GeometryInX11Form)
{
    EXPECT_EQ(CaptureVerb::parseGeometry("1920x1080+0+0"), QRect(0, 0, 1920, 1080));
    EXPECT_EQ(CaptureVerb::parseGeometry("200x100+640+20"), QRect(640, 20, 200, 100));
    EXPECT_EQ(CaptureVerb::parseGeometry("200x100-1280+20"), QRect(-1280, 20, 200, 100));
    EXPECT_FALSE(CaptureVerb::parseGeometry("0x100+0+0"));
    EXPECT_FALSE(CaptureVerb::parseGeometry("200x100"));
    EXPECT_FALSE(CaptureVerb::parseGeometry("200,100+0+0"));
}

TEST(CaptureVerb, RegionWithRectangleAndOutput)
{
    QString error;
    const auto verb = CaptureVerb::parse({"region", "--rect", "30x20+5+6", "--save"}, &error);
    ASSERT_TRUE(verb) << error.toStdString();
    EXPECT_FALSE(verb->allDisplays);
    EXPECT_EQ(verb->rect, QRect(5, 6, 30, 20));
    EXPECT_EQ(verb->output, CaptureVerb::Output::save);
    const auto copy = CaptureVerb::parse({"region", "--copy", "--rect", "30x20+5+6"}, &error);
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->output, CaptureVerb::Output::copy);
}

TEST(CaptureVerb, AllWithAnOutputRunsUnattended)
{
    QString error;
    const auto verb = CaptureVerb::parse({"all", "--copy"}, &error);
    ASSERT_TRUE(verb);
    EXPECT_TRUE(verb->allDisplays);
    EXPECT_FALSE(verb->rect);
    EXPECT_FALSE(verb->interactive);
    EXPECT_EQ(verb->output, CaptureVerb::Output::copy);
}

TEST(CaptureVerb, WithoutRectOrOutputTheUserSelects)
{
    QString error;
    const auto region = CaptureVerb::parse({"region"}, &error);
    ASSERT_TRUE(region);
    EXPECT_TRUE(region->interactive);
    EXPECT_FALSE(region->allDisplays);
    EXPECT_EQ(region->intent, CaptureIntent::image);

    const auto all = CaptureVerb::parse({"all"}, &error);
    ASSERT_TRUE(all);
    EXPECT_TRUE(all->interactive);
    EXPECT_TRUE(all->allDisplays);

    const auto text = CaptureVerb::parse({"text"}, &error);
    ASSERT_TRUE(text);
    EXPECT_TRUE(text->interactive);
    EXPECT_FALSE(text->allDisplays);
    EXPECT_EQ(text->intent, CaptureIntent::text);

    const auto scripted = CaptureVerb::parse({"region", "--rect", "30x20+5+6"}, &error);
    ASSERT_TRUE(scripted);
    EXPECT_FALSE(scripted->interactive);
}

TEST(CaptureVerb, NonsenseIsExplained)
{
    QString error;
    EXPECT_FALSE(CaptureVerb::parse({"region", "--rect"}, &error));
    EXPECT_TRUE(error.contains("--rect needs a rectangle"));
    EXPECT_FALSE(CaptureVerb::parse({"region", "--rect", "big"}, &error));
    EXPECT_TRUE(error.contains("'big' is not a rectangle"));
    EXPECT_FALSE(CaptureVerb::parse({"region", "--rect", "1x1+0+0", "--copy", "--save"}, &error));
    EXPECT_TRUE(error.contains("choose one of --copy and --save"));
    EXPECT_FALSE(CaptureVerb::parse({"all", "--rect", "1x1+0+0"}, &error));
    EXPECT_TRUE(error.contains("unknown option '--rect'"));
    EXPECT_FALSE(CaptureVerb::parse({"region", "--save"}, &error));
    EXPECT_TRUE(error.contains("--copy and --save need --rect"));
    EXPECT_FALSE(CaptureVerb::parse({"text", "--copy"}, &error));
    EXPECT_TRUE(error.contains("unknown option '--copy'"));
}

TEST(CaptureVerb, TextWithARectangleReadsThosePixelsWithoutTheOverlay)
{
    QString error;
    const auto verb = CaptureVerb::parse({"text", "--rect", "640x120+10+20"}, &error);
    ASSERT_TRUE(verb) << error.toStdString();
    EXPECT_FALSE(verb->interactive);
    EXPECT_EQ(verb->intent, CaptureIntent::text);
    EXPECT_EQ(verb->rect, QRect(10, 20, 640, 120));
    EXPECT_FALSE(CaptureVerb::parse({"text", "--rect"}, &error));
    EXPECT_EQ(error, "glimpso: --rect needs a rectangle such as 640x120+0+0");
    EXPECT_FALSE(CaptureVerb::parse({"text", "--rect", "wide"}, &error));
    EXPECT_EQ(error, "glimpso: 'wide' is not a rectangle such as 640x120+0+0");
    EXPECT_FALSE(CaptureVerb::parse({"text", "--save"}, &error));
    EXPECT_EQ(error, "glimpso: unknown option '--save'");
}
