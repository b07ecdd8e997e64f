#include "recording/BarButton.h"
#include "recording/RecordingBorder.h"
#include "recording/RecordingControlBar.h"

#include <QRegion>
#include <QTest>

#include <gtest/gtest.h>

namespace {

TEST(RecordingControlBar, TheClockRunsOnInMinutesWithoutHours)
{
    EXPECT_EQ(RecordingControlBar::clockText(0), QStringLiteral("0:00"));
    EXPECT_EQ(RecordingControlBar::clockText(59.99), QStringLiteral("0:59"));
    EXPECT_EQ(RecordingControlBar::clockText(61.2), QStringLiteral("1:01"));
    EXPECT_EQ(RecordingControlBar::clockText(3725), QStringLiteral("62:05"));
}

TEST(RecordingControlBar, StartsAtZeroAndItsButtonsAct)
{
    int stops = 0, cancels = 0;
    RecordingControlBar bar(false, [&] { ++stops; }, [&] { ++cancels; });
    EXPECT_EQ(bar.size(), QSize(196, 44));
    EXPECT_EQ(bar.timeText(), QStringLiteral("0:00"));
    bar.setSeconds(75.4);
    EXPECT_EQ(bar.timeText(), QStringLiteral("1:15"));
    bar.show();
    QTest::mouseClick(bar.stopButton(), Qt::LeftButton);
    QTest::mouseClick(bar.cancelButton(), Qt::LeftButton);
    EXPECT_EQ(stops, 1);
    EXPECT_EQ(cancels, 1);
    EXPECT_EQ(bar.stopButton()->size(), QSize(70, 28));
    EXPECT_EQ(bar.cancelButton()->size(), QSize(26, 26));
    EXPECT_EQ(bar.stopButton()->toolTip(), QStringLiteral("Stop recording"));
    EXPECT_EQ(bar.cancelButton()->toolTip(), QStringLiteral("Cancel: discard the recording"));
}

TEST(BarButton, AReleaseOutsideTheButtonDoesNothing)
{
    int presses = 0;
    BarButton button(BarButton::Kind::stop, [&] { ++presses; });
    button.show();
    QTest::mousePress(&button, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_TRUE(button.isPressed());
    QTest::mouseRelease(&button, Qt::LeftButton, {}, QPoint(200, 10));
    EXPECT_EQ(presses, 0);
    EXPECT_FALSE(button.isPressed());
}

TEST(RecordingBorder, TheDashesStayInTheMarginOutsideTheArea)
{
    const QSize window(640 + 8, 480 + 8);
    const QRect area(4, 4, 640, 480);
    const QList<QRect> dashes = RecordingBorder::dashes(window);
    ASSERT_FALSE(dashes.isEmpty());
    QRegion all;
    for (const QRect &dash : dashes) {
        EXPECT_FALSE(dash.intersects(area)) << dash.x() << "," << dash.y() << " " << dash.width() << "x" << dash.height();
        EXPECT_TRUE(QRect(QPoint(0, 0), window).contains(dash));
        all += dash;
    }
    // Six on, four off along the top, 2 points thick, one point in.
    EXPECT_TRUE(all.contains(QPoint(1, 1)));
    EXPECT_TRUE(all.contains(QPoint(6, 2)));
    EXPECT_FALSE(all.contains(QPoint(9, 1)));
    EXPECT_TRUE(all.contains(QPoint(11, 1)));
    EXPECT_FALSE(all.contains(QPoint(5, 3)));
}

} // namespace
