#include "toolbars/MenuChip.h"
#include "toolbars/TextOptionsControl.h"

#include <QMenu>

#include "ImageInk.h"

#include <gtest/gtest.h>

using glimpso::TextFont;
using glimpso::TextOptions;
using glimpso::TextStyle;

namespace {

QStringList titlesOf(const QMenu &menu)
{
    QStringList titles;
    for (QAction *action : menu.actions())
        titles.append(action->isSeparator() ? QStringLiteral("|") + action->text() : action->text());
    return titles;
}

QAction *actionTitled(const QMenu &menu, const QString &title)
{
    for (QAction *action : menu.actions()) {
        if (action->text() == title && !action->isSeparator())
            return action;
    }
    return nullptr;
}

} // namespace

TEST(TextOptionsControl, MenuSizesAddTheCurrentSizeInItsPlace)
{
    EXPECT_EQ(TextOptionsControl::menuSizes(20), (QList<int>{12, 14, 16, 20, 24, 32, 40, 48, 64}));
    EXPECT_EQ(TextOptionsControl::menuSizes(27.4), (QList<int>{12, 14, 16, 20, 24, 27, 32, 40, 48, 64}));
    EXPECT_EQ(TextOptionsControl::menuSizes(100), (QList<int>{12, 14, 16, 20, 24, 32, 40, 48, 64, 100}));
    EXPECT_EQ(TextOptionsControl::menuSizes(8), (QList<int>{8, 12, 14, 16, 20, 24, 32, 40, 48, 64}));
}

TEST(TextOptionsControl, TheSizeButtonShowsTheRoundedSize)
{
    TextOptionsControl control(28);
    control.set(TextOptions{23.6, TextStyle::plain, TextFont::system()});
    EXPECT_EQ(control.sizeButton()->title(), "24 pt");
}

TEST(TextOptionsControl, TheSizeMenuTicksTheCurrentSizeAndAChoiceFiresOnChange)
{
    TextOptionsControl control(28);
    control.set(TextOptions{27, TextStyle::outline, TextFont::serif()});
    std::optional<TextOptions> changed;
    control.onChange = [&](const TextOptions &options) { changed = options; };
    QMenu menu;
    control.fillSizeMenu(menu);
    EXPECT_EQ(titlesOf(menu).size(), 10);
    QAction *current = actionTitled(menu, "27 pt");
    ASSERT_NE(current, nullptr);
    EXPECT_TRUE(current->isChecked());
    EXPECT_FALSE(actionTitled(menu, "32 pt")->isChecked());
    actionTitled(menu, "48 pt")->trigger();
    ASSERT_TRUE(changed);
    EXPECT_EQ(changed->size, 48);
    EXPECT_EQ(changed->style, TextStyle::outline) << "the rest stays";
    EXPECT_EQ(control.sizeButton()->title(), "48 pt");
}

TEST(TextOptionsControl, TheStyleMenuListsFontsThenStylesWithTicks)
{
    TextOptionsControl control(28);
    control.set(TextOptions{20, TextStyle::background, TextFont::rounded()});
    QMenu menu;
    control.fillStyleMenu(menu);
    const QStringList titles = titlesOf(menu);
    EXPECT_EQ(titles, (QStringList{"|Font", "System", "Rounded", "Serif", "Mono", "More Fonts", "|Style", "Plain",
                                   "Outline", "Background"}));
    EXPECT_TRUE(actionTitled(menu, "Rounded")->isChecked());
    EXPECT_FALSE(actionTitled(menu, "System")->isChecked());
    EXPECT_TRUE(actionTitled(menu, "Background")->isChecked());
    EXPECT_FALSE(actionTitled(menu, "Plain")->icon().isNull()) << "styles show a preview";
}

TEST(TextOptionsControl, ACustomFamilyShowsAsATickedExtraItemUnderFont)
{
    TextOptionsControl control(28);
    control.set(TextOptions{20, TextStyle::plain, TextFont::family("DejaVu Sans")});
    QMenu menu;
    control.fillStyleMenu(menu);
    const QStringList titles = titlesOf(menu);
    ASSERT_GE(titles.size(), 6);
    EXPECT_EQ(titles[5], "DejaVu Sans");
    EXPECT_TRUE(actionTitled(menu, "DejaVu Sans")->isChecked());
    for (const char *lookName : {"System", "Rounded", "Serif", "Mono"})
        EXPECT_FALSE(actionTitled(menu, lookName)->isChecked()) << lookName;
}

TEST(TextOptionsControl, ChoosingAStyleOrFontFiresOnChange)
{
    TextOptionsControl control(28);
    control.set(TextOptions{20, TextStyle::plain, TextFont::system()});
    QList<TextOptions> changes;
    control.onChange = [&](const TextOptions &options) { changes.append(options); };
    QMenu menu;
    control.fillStyleMenu(menu);
    actionTitled(menu, "Outline")->trigger();
    actionTitled(menu, "Mono")->trigger();
    ASSERT_EQ(changes.size(), 2);
    EXPECT_EQ(changes[0].style, TextStyle::outline);
    EXPECT_EQ(changes[1].font, TextFont::mono());
    EXPECT_EQ(changes[1].style, TextStyle::outline);
}

TEST(TextOptionsControl, MoreFontsLeavesOutHiddenFamilies)
{
    EXPECT_EQ(TextOptionsControl::moreFontFamilies({".Hidden UI", "Noto Sans", ".LastResort", "Quicksand"}),
              (QStringList{"Noto Sans", "Quicksand"}));
}

TEST(TextOptionsControl, MoreFontsIsFilledWhenFirstOpened)
{
    TextOptionsControl control(28);
    QMenu menu;
    control.fillStyleMenu(menu);
    QMenu *more = actionTitled(menu, "More Fonts")->menu();
    ASSERT_NE(more, nullptr);
    EXPECT_TRUE(more->isEmpty());
    Q_EMIT more->aboutToShow();
    EXPECT_FALSE(more->isEmpty());
    const qsizetype count = more->actions().size();
    Q_EMIT more->aboutToShow();
    EXPECT_EQ(more->actions().size(), count) << "filled once";
}

TEST(TextOptionsControl, PreviewsDifferByStyleAndTakeTheTint)
{
    const QImage plain = TextOptionsControl::preview(TextStyle::plain, TextFont::system(), Qt::red, 18);
    const QImage background = TextOptionsControl::preview(TextStyle::background, TextFont::system(), Qt::red, 18);
    EXPECT_EQ(plain.size(), QSize(18, 18));
    EXPECT_GT(inkOf(plain), 0);
    EXPECT_GT(inkOf(background), inkOf(plain)) << "the plate covers more than the letter";
    bool sawRed = false;
    for (int y = 0; y < plain.height(); ++y)
        for (int x = 0; x < plain.width(); ++x) {
            const QRgb pixel = plain.pixel(x, y);
            sawRed = sawRed || (qAlpha(pixel) == 255 && qRed(pixel) == 255 && qGreen(pixel) == 0);
        }
    EXPECT_TRUE(sawRed);
}

TEST(TextOptionsControl, MenuChipStaysLitWhileOpenAndClearsHoverOnClose)
{
    MenuChip chip;
    EXPECT_FALSE(chip.lit());
    chip.setOpen(true);
    EXPECT_TRUE(chip.lit());
    chip.setOpen(false);
    EXPECT_FALSE(chip.lit());
    EXPECT_FALSE(chip.hovering());
}
