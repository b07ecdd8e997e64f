#include "appui/SettingsShell.h"

#include "appui/AppIconImage.h"
#include "appui/SettingsSidebarItem.h"
#include "appui/Theme.h"

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <gtest/gtest.h>

namespace {

QList<SettingsPage> threePages()
{
    return {
        {QStringLiteral("general"), QStringLiteral("General"), QStringLiteral("Startup, saving and sounds."),
         Lucide::settings, Theme::tile(Theme::Tile::gray)},
        {QStringLiteral("shortcuts"), QStringLiteral("Shortcuts"), QStringLiteral("Global capture keys and editor tools."),
         Lucide::type, Theme::tile(Theme::Tile::blue)},
        {QStringLiteral("about"), QStringLiteral("About"), QStringLiteral("The app, its version and where to find more."),
         Lucide::monitor, Theme::tile(Theme::Tile::gray), false, true},
    };
}

struct SettingsShellTest : ::testing::Test {
    QStringList made;
    SettingsShell shell{QStringLiteral("glimpso"), threePages(), [this](const QString &id) {
                            made.append(id);
                            auto *content = new QLabel(QStringLiteral("content of ") + id);
                            content->setObjectName(id);
                            return content;
                        }};

    void SetUp() override
    {
        shell.resize(760, 520);
        shell.show();
    }
};

} // namespace

TEST_F(SettingsShellTest, OpensOnTheFirstPage)
{
    EXPECT_EQ(shell.selection(), QStringLiteral("general"));
    EXPECT_TRUE(shell.sidebarItem(QStringLiteral("general"))->isChecked());
    ASSERT_NE(shell.pageContent(QStringLiteral("general")), nullptr);
    EXPECT_TRUE(shell.pageContent(QStringLiteral("general"))->isVisible());
}

TEST_F(SettingsShellTest, MakesAPageOnlyWhenItIsFirstChosen)
{
    EXPECT_EQ(made, QStringList{QStringLiteral("general")});
    EXPECT_EQ(shell.pageContent(QStringLiteral("shortcuts")), nullptr);
}

TEST_F(SettingsShellTest, ClickingASidebarPageSwitchesTheContent)
{
    QTest::mouseClick(shell.sidebarItem(QStringLiteral("shortcuts")), Qt::LeftButton);
    EXPECT_EQ(shell.selection(), QStringLiteral("shortcuts"));
    QWidget *shortcuts = shell.pageContent(QStringLiteral("shortcuts"));
    ASSERT_NE(shortcuts, nullptr);
    EXPECT_TRUE(shortcuts->isVisible());
    EXPECT_FALSE(shell.pageContent(QStringLiteral("general"))->isVisible());
    EXPECT_TRUE(shell.sidebarItem(QStringLiteral("shortcuts"))->isChecked());
    EXPECT_FALSE(shell.sidebarItem(QStringLiteral("general"))->isChecked());
}

TEST_F(SettingsShellTest, ComingBackToAPageKeepsItsContent)
{
    QWidget *general = shell.pageContent(QStringLiteral("general"));
    shell.setSelection(QStringLiteral("about"));
    shell.setSelection(QStringLiteral("general"));
    EXPECT_EQ(shell.pageContent(QStringLiteral("general")), general);
    EXPECT_EQ(made.count(QStringLiteral("general")), 1);
}

TEST_F(SettingsShellTest, SelectionChangesAreSignalledOnceAndUnknownIdsIgnored)
{
    QStringList seen;
    QObject::connect(&shell, &SettingsShell::selectionChanged, [&](const QString &id) { seen.append(id); });
    shell.setSelection(QStringLiteral("about"));
    shell.setSelection(QStringLiteral("about"));
    shell.setSelection(QStringLiteral("nowhere"));
    EXPECT_EQ(seen, QStringList{QStringLiteral("about")});
    EXPECT_EQ(shell.selection(), QStringLiteral("about"));
}

TEST_F(SettingsShellTest, HeaderStandsOnlyOnPagesThatShowIt)
{
    shell.setSelection(QStringLiteral("about"));
    shell.setSelection(QStringLiteral("general"));
    QLabel *title = shell.headerTitle(QStringLiteral("general"));
    ASSERT_NE(title, nullptr);
    EXPECT_EQ(title->text(), QStringLiteral("General"));
    EXPECT_EQ(title->font().pointSizeF(), Theme::pageTitle().pointSizeF());
    const auto labels = shell.currentPane()->findChildren<QLabel *>();
    const bool subtitleShown = std::any_of(labels.begin(), labels.end(), [](QLabel *label) {
        return label->text() == QStringLiteral("Startup, saving and sounds.") && label->isVisible();
    });
    EXPECT_TRUE(subtitleShown);

    EXPECT_EQ(shell.headerTitle(QStringLiteral("about")), nullptr);
    shell.setSelection(QStringLiteral("about"));
    for (QLabel *label : shell.currentPane()->findChildren<QLabel *>()) {
        EXPECT_NE(label->text(), QStringLiteral("About"));
        EXPECT_NE(label->text(), QStringLiteral("The app, its version and where to find more."));
    }
}

TEST_F(SettingsShellTest, APageThatStartsAGroupStandsApartInTheSidebar)
{
    const int generalToShortcuts = shell.sidebarItem(QStringLiteral("shortcuts"))->y()
        - shell.sidebarItem(QStringLiteral("general"))->geometry().bottom();
    const int shortcutsToAbout = shell.sidebarItem(QStringLiteral("about"))->y()
        - shell.sidebarItem(QStringLiteral("shortcuts"))->geometry().bottom();
    EXPECT_GT(shortcutsToAbout, generalToShortcuts + 8);
}

TEST_F(SettingsShellTest, SidebarShowsTheAppIconNameAndVersionLine)
{
    EXPECT_NE(shell.findChild<AppIconImage *>(), nullptr);
    const auto labels = shell.findChildren<QLabel *>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(),
                            [](QLabel *label) { return label->text() == QStringLiteral("glimpso"); }));
    EXPECT_EQ(shell.versionLabel()->text(), SettingsShell::versionLine());
    EXPECT_TRUE(shell.sidebarRect().contains(shell.versionLabel()->geometry().center()));
}

TEST(SettingsShellVersion, IsTheVersionWithTheBuildInParenthesesWhenThereIsOne)
{
    EXPECT_EQ(SettingsShell::versionLine(QStringLiteral("1.4.2"), QStringLiteral("318")),
              QStringLiteral("Version 1.4.2 (318)"));
    EXPECT_EQ(SettingsShell::versionLine(QStringLiteral("1.4.2"), QString()), QStringLiteral("Version 1.4.2"));
    EXPECT_TRUE(SettingsShell::versionLine().startsWith(QStringLiteral("Version " GLIMPSO_VERSION)));
}

TEST(SettingsShellAccessory, StandsBelowTheVersionLineInTheSidebar)
{
    QWidget *accessory = nullptr;
    SettingsShell shell(QStringLiteral("glimpso"), threePages(), [](const QString &) { return new QWidget; }, [&] {
        accessory = new QLabel(QStringLiteral("Send a problem report…"));
        return accessory;
    });
    shell.resize(760, 520);
    shell.show();
    ASSERT_NE(accessory, nullptr);
    EXPECT_TRUE(shell.sidebarRect().contains(accessory->mapTo(&shell, accessory->rect().center())));
    EXPECT_GT(accessory->mapTo(&shell, QPoint()).y(), shell.versionLabel()->mapTo(&shell, QPoint()).y());
}

TEST(SettingsShellEmpty, WithoutPagesHasNoSelection)
{
    int made = 0;
    SettingsShell shell(QStringLiteral("glimpso"), {}, [&](const QString &) {
        ++made;
        return new QWidget;
    });
    shell.show();
    EXPECT_TRUE(shell.selection().isEmpty());
    shell.setSelection(QStringLiteral("general"));
    EXPECT_TRUE(shell.selection().isEmpty());
    EXPECT_EQ(made, 0);
}

TEST(SettingsShellEmpty, APageWhoseContentIsMissingStillShowsItsHeader)
{
    SettingsShell shell(QStringLiteral("glimpso"), threePages(), [](const QString &) { return nullptr; });
    shell.show();
    EXPECT_EQ(shell.selection(), QStringLiteral("general"));
    ASSERT_NE(shell.headerTitle(QStringLiteral("general")), nullptr);
    EXPECT_TRUE(shell.headerTitle(QStringLiteral("general"))->isVisible());
}
