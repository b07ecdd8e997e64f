// The settings frame drawn offscreen in both appearances, checked at a few
// points against the theme's colours.
#include "appui/SettingsGroup.h"
#include "appui/SettingsRow.h"
#include "appui/SettingsShell.h"
#include "appui/SettingsSidebarItem.h"
#include "appui/Theme.h"
#include "appui/ThemeToggle.h"

#include "DesktopAppearance.h"

#include <QApplication>
#include <QVBoxLayout>
#include <gtest/gtest.h>

namespace {

using Appearance = Theme::Appearance;
using Color = Theme::Color;

struct Shot {
    QImage image;
    QRect sidebar;
    QRect card;
    QRect selectedItem;
    QRect toggle;
};

QWidget *generalPage(ThemeToggle *&toggle)
{
    auto *page = new QWidget;
    auto *column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    auto *group = new SettingsGroup(QStringLiteral("Startup"));
    toggle = new ThemeToggle;
    toggle->setReducesMotion(true);
    toggle->setChecked(true);
    group->addRow(new SettingsRow(Lucide::power, Theme::tile(Theme::Tile::green), QStringLiteral("Open at login"),
                                  QStringLiteral("Starts glimpso when you log in."), toggle));
    group->setObjectName(QStringLiteral("group"));
    column->addWidget(group);
    return page;
}

Shot shoot(DesktopAppearance::Kind kind)
{
    DesktopAppearance desktop(kind);
    ThemeToggle *toggle = nullptr;
    SettingsShell shell(QStringLiteral("glimpso"),
                        {{QStringLiteral("general"), QStringLiteral("General"),
                          QStringLiteral("Startup, saving and sounds."), Lucide::settings,
                          Theme::tile(Theme::Tile::gray)},
                         {QStringLiteral("about"), QStringLiteral("About"), QString(), Lucide::monitor,
                          Theme::tile(Theme::Tile::blue), false, true}},
                        [&](const QString &) { return generalPage(toggle); });
    shell.resize(720, 420);
    shell.show();
    QApplication::processEvents();
    const auto *group = shell.findChild<SettingsGroup *>(QStringLiteral("group"));
    Shot shot;
    shot.image = shell.grab().toImage();
    shot.sidebar = shell.sidebarRect();
    shot.card = QRect(group->mapTo(&shell, group->cardRect().topLeft()), group->cardRect().size());
    const SettingsSidebarItem *item = shell.sidebarItem(QStringLiteral("general"));
    shot.selectedItem = QRect(item->mapTo(&shell, QPoint()), item->size());
    shot.toggle = QRect(toggle->mapTo(&shell, QPoint()), toggle->size());
    return shot;
}

// With GLIMPSO_SCREENSHOT_DIR set, the shots are kept there to be looked at.
void keep(const QImage &image, const QString &name)
{
    const QString folder = qEnvironmentVariable("GLIMPSO_SCREENSHOT_DIR");
    if (!folder.isEmpty())
        image.save(folder + u'/' + name + QStringLiteral(".png"));
}

QRgb at(const Shot &shot, QPoint point)
{
    return shot.image.pixel(point) & 0xFFFFFF;
}

QRgb expected(Color name, Appearance appearance)
{
    return Theme::color(name, appearance).rgb() & 0xFFFFFF;
}

void expectThemeColours(const Shot &shot, Appearance appearance)
{
    // The sidebar's empty lower part, and the page's right margin.
    EXPECT_EQ(at(shot, QPoint(shot.sidebar.center().x(), shot.sidebar.bottom() - 60)), expected(Color::sidebarBg, appearance));
    EXPECT_EQ(at(shot, QPoint(shot.image.width() - 6, shot.image.height() - 6)), expected(Color::windowBg, appearance));
    // Inside the card, between the row's texts and its toggle.
    EXPECT_EQ(at(shot, QPoint(shot.toggle.left() - 30, shot.card.center().y())), expected(Color::card, appearance));
    // The selected page's fill, right of its title.
    const QRgb selected = expected(appearance == Appearance::dark ? Color::control : Color::card, appearance);
    EXPECT_EQ(at(shot, QPoint(shot.selectedItem.right() - 8, shot.selectedItem.center().y())), selected);
    // The toggle is on: its track is the success colour.
    EXPECT_EQ(at(shot, QPoint(shot.toggle.left() + 4, shot.toggle.center().y())), expected(Color::success, appearance));
}

} // namespace

TEST(SettingsShellScreenshot, LightDesktopDrawsTheLightColours)
{
    const Shot shot = shoot(DesktopAppearance::light);
    keep(shot.image, QStringLiteral("settings-shell-light"));
    expectThemeColours(shot, Appearance::light);
}

TEST(SettingsShellScreenshot, DarkDesktopDrawsTheDarkColours)
{
    const Shot shot = shoot(DesktopAppearance::dark);
    keep(shot.image, QStringLiteral("settings-shell-dark"));
    expectThemeColours(shot, Appearance::dark);
}

TEST(SettingsShellScreenshot, AnOpenShellFollowsAChangeOfAppearance)
{
    DesktopAppearance start(DesktopAppearance::light);
    SettingsShell shell(QStringLiteral("glimpso"),
                        {{QStringLiteral("general"), QStringLiteral("General"), QString(), Lucide::settings,
                          Theme::tile(Theme::Tile::gray)}},
                        [](const QString &) { return new QWidget; });
    shell.resize(600, 360);
    shell.show();
    const QPoint margin(shell.width() - 6, shell.height() - 6);
    EXPECT_EQ(shell.grab().toImage().pixel(margin) & 0xFFFFFF, expected(Color::windowBg, Appearance::light));
    {
        DesktopAppearance dark(DesktopAppearance::dark);
        QApplication::processEvents();
        EXPECT_EQ(shell.grab().toImage().pixel(margin) & 0xFFFFFF, expected(Color::windowBg, Appearance::dark));
        EXPECT_EQ(shell.palette().color(QPalette::WindowText), Theme::color(Color::ink, Appearance::dark));
    }
}
