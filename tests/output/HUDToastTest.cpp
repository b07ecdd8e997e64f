#include "output/HUDToast.h"

#include "EventLoopWait.h"

#include <QApplication>
#include <QGuiApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QScreen>

#include <gtest/gtest.h>

namespace {

QString labelText(QWidget *panel, const char *name)
{
    const auto *label = panel->findChild<QLabel *>(QString::fromLatin1(name));
    return label ? label->text() : QString();
}

void click(QWidget *widget)
{
    const QPointF at(widget->width() / 2.0, widget->height() / 2.0);
    QMouseEvent press(QEvent::MouseButtonPress, at, widget->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, at, widget->mapToGlobal(at), Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);
    QApplication::sendEvent(widget, &release);
}

TEST(HUDToast, ShowsTitleAndMessageAndSaysThemToScreenReaders)
{
    HUDToast toast;
    toast.show("Screenshot saved", "glimpso-2026-01-01-120000.png", 2.0, {});
    QWidget *panel = toast.panel();
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(labelText(panel, "title"), "Screenshot saved");
    EXPECT_EQ(labelText(panel, "body"), "glimpso-2026-01-01-120000.png");
    EXPECT_EQ(panel->accessibleName(), "Screenshot saved — glimpso-2026-01-01-120000.png");
    EXPECT_TRUE(panel->windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(panel->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
}

TEST(HUDToast, StandsNearTheTopRightOfTheScreen)
{
    HUDToast toast;
    toast.show("Copied", "a.png", 2.0, {});
    const QRect usable = QGuiApplication::primaryScreen()->availableGeometry();
    const QRect frame = toast.panel()->geometry();
    EXPECT_EQ(frame.top(), usable.top() + HUDToast::screenMargin);
    EXPECT_EQ(frame.right(), usable.right() - HUDToast::screenMargin);
}

TEST(HUDToast, GoesAwayAfterItsTime)
{
    HUDToast toast;
    toast.show("Copied", "a.png", 0.2, {});
    ASSERT_NE(toast.panel(), nullptr);
    EXPECT_TRUE(processEventsUntil([&] { return toast.panel() == nullptr; }, 3000));
}

TEST(HUDToast, WithoutAClickLetsClicksThrough)
{
    HUDToast toast;
    toast.show("Copied", "a.png", 2.0, {});
    EXPECT_TRUE(toast.panel()->windowFlags().testFlag(Qt::WindowTransparentForInput));
}

TEST(HUDToast, AClickRunsItsActionAndDismissesIt)
{
    HUDToast toast;
    int clicks = 0;
    toast.show("Screenshot saved", "a.png", 30.0, [&] { ++clicks; });
    QWidget *panel = toast.panel();
    ASSERT_NE(panel, nullptr);
    EXPECT_FALSE(panel->windowFlags().testFlag(Qt::WindowTransparentForInput));

    click(panel->findChild<QLabel *>("body"));

    EXPECT_EQ(clicks, 1);
    EXPECT_TRUE(processEventsUntil([&] { return toast.panel() == nullptr; }, 3000));
}

TEST(HUDToast, ASecondToastReplacesTheFirstAtOnceAndOutlivesTheFirstsTimer)
{
    HUDToast toast;
    toast.show("First", "one", 0.1, {});
    QPointer<QWidget> first = toast.panel();
    toast.show("Second", "two", 30.0, {});
    QWidget *second = toast.panel();

    ASSERT_NE(second, first.data());
    EXPECT_TRUE(!first || !first->isVisible());
    // Well past the first one's time.
    processEventsUntil([] { return false; }, 600);
    EXPECT_EQ(toast.panel(), second);
    EXPECT_TRUE(second->isVisible());
    EXPECT_EQ(labelText(second, "title"), "Second");
}

TEST(HUDToast, ALateFadeDoesNotTakeANewerToast)
{
    HUDToast toast;
    toast.show("First", "one", 30.0, {});
    toast.dismiss();
    toast.show("Second", "two", 30.0, {});
    QWidget *second = toast.panel();
    processEventsUntil([] { return false; }, 600);
    EXPECT_EQ(toast.panel(), second);
}

TEST(HUDToast, ALongMessageIsShortenedInTheMiddle)
{
    HUDToast toast;
    const QString body = QStringLiteral("start-") + QString(400, u'x') + QStringLiteral("-end");
    toast.show("Copied", body, 2.0, {});
    const QString shown = labelText(toast.panel(), "body");
    EXPECT_TRUE(shown.startsWith("start-")) << qPrintable(shown);
    EXPECT_TRUE(shown.endsWith("-end")) << qPrintable(shown);
    EXPECT_TRUE(shown.contains(QChar(0x2026))) << qPrintable(shown);
    EXPECT_LE(toast.panel()->width(), HUDToast::maxTextWidth + 36);
}

TEST(HUDToast, DismissWithNothingStandingDoesNothing)
{
    HUDToast toast;
    toast.dismiss();
    EXPECT_EQ(toast.panel(), nullptr);
}

} // namespace

namespace {

TEST(HUDToast, NewWordsChangeTheStandingToastInPlace)
{
    HUDToast toast;
    toast.show("Uploading… 10%", "Screenshot · 1.0 MB of 10.0 MB", 60.0, {});
    QWidget *panel = toast.panel();
    ASSERT_NE(panel, nullptr);
    const int narrowWidth = panel->width();
    toast.changeText("Uploading 2 files… 55%", "2 files · 5.5 MB of 10.0 MB and a little more text");
    EXPECT_EQ(toast.panel(), panel);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(labelText(panel, "title"), "Uploading 2 files… 55%");
    EXPECT_EQ(labelText(panel, "body"), "2 files · 5.5 MB of 10.0 MB and a little more text");
    EXPECT_EQ(panel->accessibleName(), "Uploading 2 files… 55% — 2 files · 5.5 MB of 10.0 MB and a little more text");
    EXPECT_GT(panel->width(), narrowWidth);
    const QRect usable = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_EQ(panel->geometry().right(), usable.right() - HUDToast::screenMargin);
}

TEST(HUDToast, NewWordsWithNothingStandingShowNothing)
{
    HUDToast toast;
    toast.changeText("Uploading… 10%", "x");
    EXPECT_EQ(toast.panel(), nullptr);
}

} // namespace
