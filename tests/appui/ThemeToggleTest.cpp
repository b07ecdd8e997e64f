#include "appui/ThemeToggle.h"

#include "appui/Theme.h"

#include "EventLoopWait.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

struct ThemeToggleTest : ::testing::Test {
    ThemeToggle toggle;

    void SetUp() override
    {
        toggle.setReducesMotion(true);
        toggle.show();
    }
};

// The widget's own pixels, over transparency.
QColor colourAt(QWidget &widget, QPoint point)
{
    QImage image(widget.size(), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image.pixelColor(point);
}

} // namespace

TEST_F(ThemeToggleTest, StartsOffWithTheKnobAtTheOffEnd)
{
    EXPECT_TRUE(toggle.isCheckable());
    EXPECT_FALSE(toggle.isChecked());
    EXPECT_EQ(toggle.knobPosition(), 0.0);
    EXPECT_EQ(toggle.trackColor(), Theme::color(Theme::Color::toggleOff));
}

TEST_F(ThemeToggleTest, AClickTurnsItOnAndAnotherOff)
{
    QSignalSpy toggled(&toggle, &QAbstractButton::toggled);
    QTest::mouseClick(&toggle, Qt::LeftButton);
    EXPECT_TRUE(toggle.isChecked());
    EXPECT_EQ(toggle.trackColor(), Theme::color(Theme::Color::success));
    QTest::mouseClick(&toggle, Qt::LeftButton);
    EXPECT_FALSE(toggle.isChecked());
    EXPECT_EQ(toggled.count(), 2);
}

TEST_F(ThemeToggleTest, ADisabledToggleIgnoresClicksAndKeys)
{
    toggle.setEnabled(false);
    QTest::mouseClick(&toggle, Qt::LeftButton);
    QTest::keyClick(&toggle, Qt::Key_Space);
    EXPECT_FALSE(toggle.isChecked());
    EXPECT_EQ(toggle.knobPosition(), 0.0);
}

TEST_F(ThemeToggleTest, ADisabledToggleIsDrawnFaded)
{
    toggle.setChecked(true);
    const QPoint trackPoint(4, toggle.height() / 2);
    const QColor enabled = colourAt(toggle, trackPoint);
    toggle.setEnabled(false);
    const QColor disabled = colourAt(toggle, trackPoint);
    EXPECT_EQ(enabled.rgb(), Theme::color(Theme::Color::success).rgb());
    EXPECT_LT(disabled.alpha(), enabled.alpha());
}

TEST_F(ThemeToggleTest, SpaceTogglesItWhenFocused)
{
    toggle.setFocus();
    QTest::keyClick(&toggle, Qt::Key_Space);
    EXPECT_TRUE(toggle.isChecked());
}

TEST_F(ThemeToggleTest, WithReducedMotionTheKnobJumps)
{
    QTest::mouseClick(&toggle, Qt::LeftButton);
    EXPECT_FALSE(toggle.isSliding());
    EXPECT_EQ(toggle.knobPosition(), 1.0);
}

TEST_F(ThemeToggleTest, OtherwiseTheKnobSlidesAcross)
{
    toggle.setReducesMotion(false);
    QTest::mouseClick(&toggle, Qt::LeftButton);
    EXPECT_TRUE(toggle.isSliding());
    EXPECT_LT(toggle.knobPosition(), 1.0);
    EXPECT_TRUE(processEventsUntil([&] { return !toggle.isSliding(); }, 2000));
    EXPECT_EQ(toggle.knobPosition(), 1.0);
}

TEST_F(ThemeToggleTest, ASwitchSetWhileHiddenDoesNotSlideWhenShown)
{
    ThemeToggle hidden;
    hidden.setReducesMotion(false);
    hidden.setChecked(true);
    EXPECT_FALSE(hidden.isSliding());
    EXPECT_EQ(hidden.knobPosition(), 1.0);
}

TEST_F(ThemeToggleTest, KnobIsWhiteAndSitsAtTheOnEndWhenOn)
{
    toggle.setChecked(true);
    const QImage image = toggle.grab().toImage();
    const int middle = image.height() / 2;
    EXPECT_EQ(image.pixelColor(image.width() - 10, middle).rgb(), QColor(Qt::white).rgb());
    EXPECT_EQ(image.pixelColor(6, middle).rgb(), Theme::color(Theme::Color::success).rgb());
}
