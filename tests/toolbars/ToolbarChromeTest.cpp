#include "toolbars/ToolbarChrome.h"

#include <gtest/gtest.h>

TEST(ToolbarChrome, TheWordGlassGivesTheTranslucentStyleInTheAppearancesTone)
{
    const ToolbarChrome light = ToolbarChrome::resolve("glass", "auto", 0.85, 10, false);
    EXPECT_TRUE(light.glass);
    EXPECT_GT(light.background.lightness(), 200);
    EXPECT_LT(light.background.alphaF(), 1.0f);
    EXPECT_EQ(light.iconColor.rgb(), QColor(Qt::black).rgb());

    const ToolbarChrome dark = ToolbarChrome::resolve("Glass", "auto", 0.85, 10, true);
    EXPECT_TRUE(dark.glass);
    EXPECT_LT(dark.background.lightness(), 60);
    EXPECT_EQ(dark.iconColor.rgb(), QColor(Qt::white).rgb());
}

TEST(ToolbarChrome, ASolidColourTakesTheOpacity)
{
    const ToolbarChrome chrome = ToolbarChrome::resolve("#336699", "auto", 0.5, 6, false);
    EXPECT_FALSE(chrome.glass);
    EXPECT_EQ(chrome.background.rgb(), QColor(0x33, 0x66, 0x99).rgb());
    EXPECT_NEAR(chrome.background.alphaF(), 0.5, 0.01);
    EXPECT_EQ(chrome.cornerRadius, 6);
}

TEST(ToolbarChrome, AnUnreadableColourFallsBackToDarkGrey)
{
    const ToolbarChrome chrome = ToolbarChrome::resolve("not a colour", "auto", 2.0, 10, false);
    EXPECT_FALSE(chrome.glass);
    EXPECT_EQ(chrome.background.red(), 31);
    EXPECT_EQ(chrome.background.alpha(), 255) << "opacity is clamped to 1";
}

TEST(ToolbarChrome, AutoIconsContrastWithASolidBackground)
{
    EXPECT_EQ(ToolbarChrome::resolve("#FFFFFF", "auto", 1, 10, true).iconColor.rgb(), QColor(Qt::black).rgb());
    EXPECT_EQ(ToolbarChrome::resolve("#101010", "auto", 1, 10, false).iconColor.rgb(), QColor(Qt::white).rgb());
}

TEST(ToolbarChrome, ANamedIconColourIsUsedAsItIs)
{
    EXPECT_EQ(ToolbarChrome::resolve("glass", "#FF9500", 1, 10, false).iconColor, QColor(0xFF, 0x95, 0x00));
}

TEST(ToolbarChrome, ANegativeRadiusIsSquare)
{
    EXPECT_EQ(ToolbarChrome::resolve("glass", "auto", 1, -3, false).cornerRadius, 0);
}
