#include "annotation/TextOptions.h"

#include <gtest/gtest.h>

using namespace glimpso;

TEST(TextOptions, DefaultsToSize20PlainSystem)
{
    const TextOptions options;
    EXPECT_EQ(options.size, 20);
    EXPECT_EQ(options.style, TextStyle::plain);
    EXPECT_EQ(options.font, TextFont::system());
}

TEST(TextOptions, ComparesFieldByField)
{
    const TextOptions base;
    TextOptions bigger = base;
    bigger.size = 21;
    TextOptions outlined = base;
    outlined.style = TextStyle::outline;
    TextOptions serif = base;
    serif.font = TextFont::serif();
    EXPECT_EQ(base, TextOptions{});
    EXPECT_NE(base, bigger);
    EXPECT_NE(base, outlined);
    EXPECT_NE(base, serif);
}

TEST(TextFont, ComparesFamiliesByName)
{
    EXPECT_EQ(TextFont::family("Noto Serif"), TextFont::family("Noto Serif"));
    EXPECT_NE(TextFont::family("Noto Serif"), TextFont::family("DejaVu Serif"));
    EXPECT_NE(TextFont::family("Noto Serif"), TextFont::serif());
    EXPECT_NE(TextFont::rounded(), TextFont::mono());
}

TEST(TextStyle, StoresEachCaseByItsName)
{
    EXPECT_EQ(toString(TextStyle::plain), "plain");
    EXPECT_EQ(toString(TextStyle::outline), "outline");
    EXPECT_EQ(toString(TextStyle::background), "background");
    EXPECT_EQ(textStyleFromString("outline"), TextStyle::outline);
    EXPECT_FALSE(textStyleFromString("bold").has_value());
}
