#include "platform/desktop/XdgAutostartLoginItem.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct XdgAutostartLoginItemTest : ::testing::Test {
    QTemporaryDir dir;
    QString entry = dir.filePath("config/autostart/glimpso.desktop");
};

TEST_F(XdgAutostartLoginItemTest, EntryPresenceIsTheStatus)
{
    XdgAutostartLoginItem item(entry, {}, "/usr/bin/glimpso");
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(item.setEnabled(true), QString());
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(item.setEnabled(false), QString());
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(QFile::exists(entry));
}

TEST_F(XdgAutostartLoginItemTest, CopiesTheInstalledLauncher)
{
    const QString launcher = dir.filePath("glimpso.desktop");
    QFile file(launcher);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Desktop Entry]\nType=Application\nName=glimpso\nExec=glimpso\n");
    file.close();
    XdgAutostartLoginItem item(entry, launcher, "/ignored");
    ASSERT_EQ(item.setEnabled(true), QString());
    EXPECT_EQ(readAll(entry), readAll(launcher));
}

TEST_F(XdgAutostartLoginItemTest, WithoutAnInstalledLauncherWritesOneThatStartsThisProgram)
{
    XdgAutostartLoginItem item(entry, dir.filePath("missing.desktop"), "/opt/glimpso/bin/glimpso");
    ASSERT_EQ(item.setEnabled(true), QString());
    const QByteArray text = readAll(entry);
    EXPECT_TRUE(text.startsWith("[Desktop Entry]\n"));
    EXPECT_TRUE(text.contains("Exec=/opt/glimpso/bin/glimpso\n"));
}

TEST_F(XdgAutostartLoginItemTest, FolderThatCannotBeMadeIsReported)
{
    const QString blocker = dir.filePath("config");
    QFile file(blocker);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)); // a file where the folder should be
    file.close();
    XdgAutostartLoginItem item(entry, {}, "/usr/bin/glimpso");
    EXPECT_FALSE(item.setEnabled(true).isEmpty());
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(XdgAutostartLoginItemTest, DisablingWhenAbsentIsFine)
{
    XdgAutostartLoginItem item(entry, {}, "/usr/bin/glimpso");
    EXPECT_EQ(item.setEnabled(false), QString());
}

} // namespace
