#include "appui/Theme.h"

#include "DesktopAppearance.h"

#include <QApplication>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

using Color = Theme::Color;
using Appearance = Theme::Appearance;

struct Pair {
    Color name;
    QRgb light;
    QRgb dark;
};

// The table of colours, both appearances; hairlines are checked apart.
const Pair table[] = {
    {Color::ink, 0x15171B, 0xF2F3F5},
    {Color::inkSecondary, 0x5C636D, 0xA2A8B2},
    {Color::windowBg, 0xF6F7F9, 0x1C1D20},
    {Color::sidebarBg, 0xECEEF2, 0x232428},
    {Color::card, 0xFFFFFF, 0x2A2B30},
    {Color::control, 0xECEEF2, 0x3A3B41},
    {Color::success, 0x22A350, 0x34C26A},
    {Color::successInk, 0x1E7A3E, 0x5FD38A},
    {Color::successTint, 0xE3F4E8, 0x1D3324},
    {Color::danger, 0xB3261E, 0xFF6B61},
    {Color::toggleOff, 0xCDD2DA, 0x4A4B52},
};

QRgb rgbOf(const QColor &color)
{
    return color.rgb() & 0xFFFFFF;
}

} // namespace

TEST(Theme, EveryColourOfTheTableHasItsLightAndDarkValue)
{
    for (const Pair &pair : table) {
        SCOPED_TRACE(int(pair.name));
        EXPECT_EQ(rgbOf(Theme::color(pair.name, Appearance::light)), pair.light);
        EXPECT_EQ(rgbOf(Theme::color(pair.name, Appearance::dark)), pair.dark);
        EXPECT_EQ(Theme::color(pair.name, Appearance::light).alpha(), 255);
        EXPECT_EQ(Theme::color(pair.name, Appearance::dark).alpha(), 255);
    }
}

TEST(Theme, HairlineIsBlackInLightAndWhiteInDarkWithALowAlpha)
{
    const QColor light = Theme::color(Color::hairline, Appearance::light);
    const QColor dark = Theme::color(Color::hairline, Appearance::dark);
    EXPECT_EQ(rgbOf(light), 0x000000u);
    EXPECT_EQ(rgbOf(dark), 0xFFFFFFu);
    for (const QColor &line : {light, dark}) {
        EXPECT_GT(line.alphaF(), 0.0);
        EXPECT_LT(line.alphaF(), 0.25);
    }
}

TEST(Theme, AccentAndWarningDifferBetweenAppearancesAndReadOnTheirWindow)
{
    for (const Color name : {Color::accent, Color::warning}) {
        const QColor light = Theme::color(name, Appearance::light);
        const QColor dark = Theme::color(name, Appearance::dark);
        EXPECT_NE(light, dark);
        // A mark on the window must stand apart from the window itself.
        EXPECT_LT(light.lightnessF(), Theme::color(Color::windowBg, Appearance::light).lightnessF() - 0.2);
        EXPECT_GT(dark.lightnessF(), Theme::color(Color::windowBg, Appearance::dark).lightnessF() + 0.2);
    }
}

TEST(Theme, TilesAreDistinctOpaqueColours)
{
    QList<QRgb> seen;
    for (int index = 0; index < Theme::tileCount; ++index) {
        const QColor tile = Theme::tile(Theme::Tile(index));
        EXPECT_EQ(tile.alpha(), 255);
        EXPECT_FALSE(seen.contains(tile.rgb())) << index;
        seen.append(tile.rgb());
    }
}

TEST(Theme, AppearanceOfAPaletteFollowsItsWindowColour)
{
    EXPECT_EQ(Theme::appearanceOf(DesktopAppearance::paletteOf(DesktopAppearance::dark)), Appearance::dark);
    EXPECT_EQ(Theme::appearanceOf(DesktopAppearance::paletteOf(DesktopAppearance::light)), Appearance::light);
}

TEST(Theme, CurrentColoursFollowTheDesktop)
{
    {
        DesktopAppearance desktop(DesktopAppearance::dark);
        EXPECT_TRUE(Theme::isDark());
        EXPECT_EQ(Theme::color(Color::windowBg), Theme::color(Color::windowBg, Appearance::dark));
    }
    DesktopAppearance desktop(DesktopAppearance::light);
    EXPECT_FALSE(Theme::isDark());
    EXPECT_EQ(Theme::color(Color::ink), Theme::color(Color::ink, Appearance::light));
}

TEST(Theme, SignalsAChangeOfAppearanceOnceAndNotAPaletteChangeThatKeepsIt)
{
    DesktopAppearance start(DesktopAppearance::light);
    Theme theme;
    QSignalSpy changes(&theme, &Theme::appearanceChanged);
    ASSERT_EQ(theme.appearance(), Appearance::light);

    QApplication::setPalette(DesktopAppearance::paletteOf(DesktopAppearance::dark));
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes.at(0).at(0).value<Theme::Appearance>(), Appearance::dark);
    EXPECT_EQ(theme.appearance(), Appearance::dark);

    QPalette stillDark = DesktopAppearance::paletteOf(DesktopAppearance::dark);
    stillDark.setColor(QPalette::Highlight, Qt::magenta);
    QApplication::setPalette(stillDark);
    EXPECT_EQ(changes.count(), 1);
}

TEST(Theme, ThemedPaletteCarriesTheInksAndSurfaces)
{
    const QPalette dark = Theme::palette(Appearance::dark);
    EXPECT_EQ(dark.color(QPalette::Window), Theme::color(Color::windowBg, Appearance::dark));
    EXPECT_EQ(dark.color(QPalette::WindowText), Theme::color(Color::ink, Appearance::dark));
    EXPECT_EQ(dark.color(QPalette::Base), Theme::color(Color::card, Appearance::dark));
    EXPECT_EQ(Theme::appearanceOf(dark), Appearance::dark);
    EXPECT_EQ(Theme::appearanceOf(Theme::palette(Appearance::light)), Appearance::light);
}

TEST(Theme, FontsFollowTheApplicationFontAndRankTitleOverBodyOverCaption)
{
    const QFont previous = QApplication::font();
    QFont base = previous;
    base.setPointSizeF(10);
    QApplication::setFont(base);
    EXPECT_DOUBLE_EQ(Theme::body().pointSizeF(), 10);
    EXPECT_GT(Theme::pageTitle().pointSizeF(), Theme::body().pointSizeF());
    EXPECT_LT(Theme::caption().pointSizeF(), Theme::body().pointSizeF());
    EXPECT_GE(Theme::pageTitle().weight(), QFont::DemiBold);
    base.setPointSizeF(14);
    QApplication::setFont(base);
    EXPECT_DOUBLE_EQ(Theme::body().pointSizeF(), 14);
    QApplication::setFont(previous);
}
