#include "settings/HexColor.h"

#include <gtest/gtest.h>

TEST(HexColor, ReadsSixDigitsInEitherCase)
{
    EXPECT_EQ(HexColor::parse(QStringLiteral("#FF3B30")), QColor(0xff, 0x3b, 0x30));
    EXPECT_EQ(HexColor::parse(QStringLiteral("#ff3b30")), QColor(0xff, 0x3b, 0x30));
    EXPECT_EQ(HexColor::parse(QStringLiteral(" #000000 ")), QColor(0, 0, 0));
}

TEST(HexColor, RejectsEverythingElse)
{
    for (const char *text : {"", "#", "FF3B30", "#FF3B3", "#FF3B300", "#FF3B3G", "red", "#+F3B30", "#-F3B30"})
        EXPECT_FALSE(HexColor::parse(QString::fromLatin1(text)).has_value()) << text;
}

TEST(HexColor, FormatsUpperCase)
{
    EXPECT_EQ(HexColor::format(QColor(0xeb, 0xeb, 0x0a)), QStringLiteral("#EBEB0A"));
    EXPECT_EQ(HexColor::parse(HexColor::format(QColor(1, 2, 3))), QColor(1, 2, 3));
}
