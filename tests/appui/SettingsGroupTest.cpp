#include "appui/SettingsGroup.h"

#include "appui/IconTile.h"
#include "appui/RowDivider.h"
#include "appui/SettingsRow.h"
#include "appui/Theme.h"
#include "appui/ThemeToggle.h"

#include <QLabel>
#include <gtest/gtest.h>

namespace {

SettingsRow *toggleRow(const QString &title, const QString &hint = {})
{
    return new SettingsRow(Lucide::power, Theme::tile(Theme::Tile::green), title, hint, new ThemeToggle);
}

} // namespace

TEST(SettingsRow, ShowsTileTitleHintAndTrailingInARow)
{
    auto *toggle = new ThemeToggle;
    SettingsRow row(Lucide::power, Theme::tile(Theme::Tile::green), QStringLiteral("Open at login"),
                    QStringLiteral("Starts glimpso when you log in."), toggle);
    row.resize(520, row.sizeHint().height());
    row.show();
    auto *tile = row.findChild<IconTile *>();
    ASSERT_NE(tile, nullptr);
    EXPECT_EQ(tile->color(), Theme::tile(Theme::Tile::green));
    EXPECT_EQ(row.title(), QStringLiteral("Open at login"));
    EXPECT_TRUE(row.hintLabel()->isVisible());
    EXPECT_EQ(row.hintLabel()->palette().color(QPalette::WindowText), Theme::color(Theme::Color::inkSecondary));
    EXPECT_EQ(row.titleLabel()->palette().color(QPalette::WindowText), Theme::color(Theme::Color::ink));
    EXPECT_EQ(row.trailing(), toggle);
    // Tile, then the texts, then the control at the end.
    EXPECT_LT(tile->geometry().right(), row.titleLabel()->geometry().left());
    EXPECT_GT(row.hintLabel()->geometry().top(), row.titleLabel()->geometry().top());
    EXPECT_GT(toggle->geometry().left(), row.titleLabel()->geometry().left());
    EXPECT_GE(toggle->geometry().right(), row.width() - 20);
}

TEST(SettingsRow, WithoutAHintShowsNoHintLineAndOneCanBeSetLater)
{
    SettingsRow row(Lucide::save, Theme::tile(Theme::Tile::blue), QStringLiteral("Format"));
    EXPECT_TRUE(row.hint().isEmpty());
    EXPECT_TRUE(row.hintLabel()->isHidden());
    row.setHint(QStringLiteral("Draw on the frozen screen, then copy or save."));
    EXPECT_FALSE(row.hintLabel()->isHidden());
    row.setHint({});
    EXPECT_TRUE(row.hintLabel()->isHidden());
}

TEST(SettingsRow, WithoutASymbolHasNoTile)
{
    SettingsRow row(std::nullopt, QColor(), QStringLiteral("Region"));
    EXPECT_EQ(row.findChild<IconTile *>(), nullptr);
}

TEST(SettingsGroup, SeparatesItsRowsWithOneDividerBetweenEachTwo)
{
    SettingsGroup group(QStringLiteral("Sounds"));
    group.addRow(toggleRow(QStringLiteral("Shutter sound")));
    EXPECT_EQ(group.findChildren<RowDivider *>().size(), 0);
    group.addRow(toggleRow(QStringLiteral("Notification sound")));
    group.addRow(toggleRow(QStringLiteral("Third")));
    EXPECT_EQ(group.rowCount(), 3);
    EXPECT_EQ(group.findChildren<RowDivider *>().size(), 2);
}

TEST(SettingsGroup, TitleIsInTheCaptionFontAboveTheCard)
{
    SettingsGroup group(QStringLiteral("Startup"));
    group.addRow(toggleRow(QStringLiteral("Open at login")));
    group.resize(500, group.sizeHint().height());
    group.show();
    EXPECT_EQ(group.title(), QStringLiteral("Startup"));
    EXPECT_EQ(group.titleLabel()->font().pointSizeF(), Theme::caption().pointSizeF());
    EXPECT_EQ(group.titleLabel()->font().weight(), Theme::caption().weight());
    EXPECT_LT(group.titleLabel()->geometry().bottom(), group.cardRect().top());
}

TEST(SettingsGroup, AnUntitledGroupIsTheCardAlone)
{
    SettingsGroup group;
    group.addRow(toggleRow(QStringLiteral("Open at login")));
    EXPECT_TRUE(group.titleLabel()->isHidden());
}

TEST(SettingsGroup, DrawsItsRowsOnTheCardColour)
{
    SettingsGroup group(QStringLiteral("Sounds"));
    group.addRow(toggleRow(QStringLiteral("Shutter sound")));
    group.resize(500, group.sizeHint().height());
    group.show();
    const QImage image = group.grab().toImage();
    const QPoint inCard = group.cardRect().center() + QPoint(60, 0);
    EXPECT_EQ(image.pixelColor(inCard).rgb(), Theme::color(Theme::Color::card).rgb());
}
