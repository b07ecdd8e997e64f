#include "platform/x11/X11KeyGrabber.h"

#include "XvfbServer.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSignalSpy>
#include <QStandardPaths>
#include "EventLoopWait.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

const Hotkey kCtrlShift2 { 19, Hotkey::commandFlag | Hotkey::shiftFlag };
const Hotkey kCtrlAltH { 4, Hotkey::commandFlag | Hotkey::optionFlag };

// Each test has a server of its own; xdotool and xmodmap play the person at
// the keyboard.
class X11KeyGrabberTest : public ::testing::Test
{
protected:
    std::unique_ptr<XvfbServer> server;

    void SetUp() override
    {
        server = std::make_unique<XvfbServer>(QSize(320, 240));
        if (!server->isRunning())
            GTEST_SKIP() << server->reason().toStdString();
    }

    bool run(const QString &program, const QStringList &arguments)
    {
        if (QStandardPaths::findExecutable(program).isEmpty())
            return false;
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(server->display()));
        process.setProcessEnvironment(env);
        process.start(program, arguments);
        return process.waitForFinished(20000) && process.exitStatus() == QProcess::NormalExit
            && process.exitCode() == 0;
    }

    void needs(const QString &program)
    {
        if (QStandardPaths::findExecutable(program).isEmpty())
            GTEST_SKIP() << program.toStdString() << " is not installed";
    }

    // Waits, with a time-out, for the grabber to see what the server did.
    template <typename Condition> static bool eventually(Condition condition)
    {
        return processEventsUntil(condition);
    }
};

TEST_F(X11KeyGrabberTest, GrabsOnALiveServer)
{
    X11KeyGrabber grabber(server->display());
    ASSERT_TRUE(grabber.isConnected());
    EXPECT_EQ(grabber.name(), "X11");
    EXPECT_TRUE(grabber.grab(2, kCtrlShift2).ok());
}

TEST_F(X11KeyGrabberTest, WithoutAServerEveryGrabFailsPolitely)
{
    X11KeyGrabber grabber(":4999");
    EXPECT_FALSE(grabber.isConnected());
    const auto result = grabber.grab(2, kCtrlShift2);
    EXPECT_EQ(result.status, GlobalKeyGrabber::Result::noConnection);
}

TEST_F(X11KeyGrabberTest, ACombinationHeldByAnotherClientIsRefusedWithBadAccess)
{
    X11KeyGrabber first(server->display());
    X11KeyGrabber second(server->display());
    ASSERT_TRUE(first.grab(2, kCtrlShift2).ok());
    const auto refused = second.grab(2, kCtrlShift2);
    EXPECT_EQ(refused.status, 10);
    EXPECT_FALSE(refused.reason.isEmpty());
    // Another combination is free.
    EXPECT_TRUE(second.grab(6, kCtrlAltH).ok());
}

TEST_F(X11KeyGrabberTest, UngrabGivesTheCombinationBack)
{
    X11KeyGrabber first(server->display());
    X11KeyGrabber second(server->display());
    ASSERT_TRUE(first.grab(2, kCtrlShift2).ok());
    first.ungrab(2);
    EXPECT_TRUE(second.grab(2, kCtrlShift2).ok());
}

TEST_F(X11KeyGrabberTest, AKeyTheTableDoesNotKnowIsRefused)
{
    X11KeyGrabber grabber(server->display());
    EXPECT_EQ(grabber.grab(2, { 110, Hotkey::commandFlag }).status, GlobalKeyGrabber::Result::unknownKey);
}

TEST_F(X11KeyGrabberTest, APressReportsTheIdOfItsCombination)
{
    needs("xdotool");
    X11KeyGrabber grabber(server->display());
    ASSERT_TRUE(grabber.grab(2, kCtrlShift2).ok());
    ASSERT_TRUE(grabber.grab(6, kCtrlAltH).ok());
    QSignalSpy spy(&grabber, &GlobalKeyGrabber::pressed);
    ASSERT_TRUE(run("xdotool", { "key", "ctrl+alt+h" }));
    ASSERT_TRUE(eventually([&] { return spy.count() >= 1; }));
    EXPECT_EQ(spy.at(0).at(0).toInt(), 6);
}

TEST_F(X11KeyGrabberTest, ExtraModifiersAreAnotherCombination)
{
    needs("xdotool");
    X11KeyGrabber grabber(server->display());
    ASSERT_TRUE(grabber.grab(6, { 4, Hotkey::commandFlag }).ok()); // Ctrl+H
    ASSERT_TRUE(grabber.grab(7, kCtrlShift2).ok());
    QSignalSpy spy(&grabber, &GlobalKeyGrabber::pressed);
    // Ctrl+Alt+H is not grabbed; the following Ctrl+Shift+2 is, and is the only press seen.
    ASSERT_TRUE(run("xdotool", { "key", "ctrl+alt+h", "ctrl+shift+2" }));
    ASSERT_TRUE(eventually([&] { return spy.count() >= 1; }));
    EXPECT_EQ(spy.at(0).at(0).toInt(), 7);
    QCoreApplication::processEvents();
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(X11KeyGrabberTest, NumLockAndCapsLockDoNotGetInTheWay)
{
    needs("xdotool");
    X11KeyGrabber grabber(server->display());
    ASSERT_TRUE(grabber.grab(2, kCtrlShift2).ok());
    QSignalSpy spy(&grabber, &GlobalKeyGrabber::pressed);
    ASSERT_TRUE(run("xdotool", { "key", "Num_Lock", "ctrl+shift+2" }));
    ASSERT_TRUE(eventually([&] { return spy.count() >= 1; }));
    ASSERT_TRUE(run("xdotool", { "key", "Caps_Lock", "ctrl+shift+2" }));
    ASSERT_TRUE(eventually([&] { return spy.count() >= 2; }));
    // Both locks on at once (NumLock is still on).
    ASSERT_TRUE(run("xdotool", { "key", "ctrl+shift+2" }));
    ASSERT_TRUE(eventually([&] { return spy.count() >= 3; }));
    for (const QList<QVariant> &press : spy)
        EXPECT_EQ(press.at(0).toInt(), 2);
}

TEST_F(X11KeyGrabberTest, AKeyboardMapChangeMovesTheGrabToTheKeysNewPlace)
{
    needs("xdotool");
    needs("xmodmap");
    X11KeyGrabber grabber(server->display());
    ASSERT_TRUE(grabber.grab(2, kCtrlShift2).ok());
    QSignalSpy spy(&grabber, &GlobalKeyGrabber::pressed);

    // The "2" leaves its key and moves to keycode 250, as another layout would put it elsewhere.
    ASSERT_TRUE(run("xmodmap", { "-e", "keycode 11 = F35", "-e", "keycode 250 = 2 at" }));
    ASSERT_TRUE(eventually([&] { return grabber.keyCodeForScanCode(250) == std::optional<uint16_t>(19); }));

    ASSERT_TRUE(run("xdotool", { "key", "ctrl+shift+2" }));
    ASSERT_TRUE(eventually([&] { return spy.count() >= 1; }));
    EXPECT_EQ(spy.at(0).at(0).toInt(), 2);
}

TEST_F(X11KeyGrabberTest, ScanCodesReadAsTheKeyUnderTheCharacter)
{
    X11KeyGrabber grabber(server->display());
    // Whatever keycode the server gives "2", it reads back as the stored code of "2".
    bool found = false;
    for (quint32 code = 8; code < 256; ++code) {
        if (grabber.keyCodeForScanCode(code) == std::optional<uint16_t>(19))
            found = true;
    }
    EXPECT_TRUE(found);
    EXPECT_EQ(grabber.keyCodeForScanCode(1000), std::nullopt);
}

} // namespace
