#include "platform/dbus/DBusDesktopOpener.h"

#include "EventLoopWait.h"
#include "PrivateBus.h"

#include <QDBusConnection>
#include <QDesktopServices>
#include <QObject>
#include <QUrl>

#include <gtest/gtest.h>

// The file manager's ShowItems on the private bus.
class FakeFileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QList<QStringList> shown;

public Q_SLOTS:
    void ShowItems(const QStringList &uris, const QString &) { shown.append(uris); }
};

// Where QDesktopServices sends file URLs in these tests, instead of the desktop.
class OpenedUrls : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> urls;

public Q_SLOTS:
    void open(const QUrl &url) { urls.append(url); }
};

namespace {

struct DBusDesktopOpenerTest : ::testing::Test {
    PrivateBus bus;
    OpenedUrls opened;

    void SetUp() override
    {
        if (!bus.isUp())
            GTEST_SKIP() << "no dbus-daemon to run a private bus";
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &opened, "open");
    }
    void TearDown() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
};

TEST_F(DBusDesktopOpenerTest, RevealAsksTheFileManagerToShowTheFile)
{
    FakeFileManager manager;
    QDBusConnection managerConnection = bus.connect(QStringLiteral("file-manager"));
    ASSERT_TRUE(managerConnection.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager,
                                                 QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(managerConnection.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    DBusDesktopOpener opener(bus.connect(QStringLiteral("glimpso")));

    opener.reveal(QStringLiteral("/home/u/Pictures/Screenshots/glimpso 1.png"));

    ASSERT_TRUE(processEventsUntil([&] { return !manager.shown.isEmpty(); }));
    EXPECT_EQ(manager.shown[0], QStringList{"file:///home/u/Pictures/Screenshots/glimpso%201.png"});
    EXPECT_TRUE(opened.urls.isEmpty());
}

TEST_F(DBusDesktopOpenerTest, WithoutAFileManagerRevealOpensTheFolder)
{
    DBusDesktopOpener opener(bus.connect(QStringLiteral("glimpso")));
    opener.reveal(QStringLiteral("/home/u/Pictures/Screenshots/a.png"));
    ASSERT_TRUE(processEventsUntil([&] { return !opened.urls.isEmpty(); }));
    EXPECT_EQ(opened.urls, QList<QUrl>{QUrl::fromLocalFile("/home/u/Pictures/Screenshots")});
}

TEST_F(DBusDesktopOpenerTest, OpenHandsTheUrlToTheDesktop)
{
    DBusDesktopOpener opener(bus.connect(QStringLiteral("glimpso")));
    opener.open(QUrl::fromLocalFile("/home/u/a.png"));
    EXPECT_EQ(opened.urls, QList<QUrl>{QUrl::fromLocalFile("/home/u/a.png")});
}

} // namespace

#include "DBusDesktopOpenerTest.moc"
