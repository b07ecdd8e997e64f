#include "recording/LiveAreaPicker.h"
#include "recording/PickerDrag.h"
#include "recording/PickerView.h"

#include <QImage>
#include <QKeyEvent>
#include <QTest>

#include <gtest/gtest.h>

namespace {

TEST(PickerDrag, ADragOfFifteenByTwoHundredStartsOverAndTheRestCompletes)
{
    PickerDrag drag;
    drag.press({100, 100});
    drag.drag({115, 300});
    EXPECT_FALSE(drag.release({115, 300}).has_value());
    EXPECT_FALSE(drag.isDragging());
    EXPECT_FALSE(drag.selection().has_value());
    drag.press({100, 100});
    const std::optional<QRectF> chosen = drag.release({116, 116});
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(*chosen, QRectF(100, 100, 16, 16));
}

TEST(PickerDrag, TheAreaIsWholePointsWhicheverWayTheDragGoes)
{
    PickerDrag drag;
    drag.press({300.6, 200.2});
    const std::optional<QRectF> chosen = drag.release({100.4, 50.9});
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(*chosen, QRectF(100, 50, 201, 151));
}

TEST(PickerDrag, TheSizePillSitsUnderTheSelectionAndEightOverTheBottomAtLeast)
{
    const QSizeF text(60, 16);
    const QRectF high = PickerDrag::sizePill(QRectF(200, 500, 300, 200), text);
    EXPECT_EQ(high, QRectF(500 - 84, 470, 84, 28));
    const QRectF low = PickerDrag::sizePill(QRectF(200, 5, 300, 200), text);
    EXPECT_DOUBLE_EQ(low.y(), 8);
}

TEST(PickerDrag, TheHintPillIsCentredEightyUnderTheTop)
{
    const QRectF pill = PickerDrag::hintPill(QSizeF(1920, 1080), QSizeF(300, 16));
    EXPECT_EQ(pill, QRectF((1920 - 324) / 2.0, 1000, 324, 28));
    EXPECT_DOUBLE_EQ(PickerDrag::hintPill(QSizeF(400, 50), QSizeF(100, 16)).y(), 8);
}

TEST(PickerDrag, Texts)
{
    EXPECT_EQ(PickerDrag::sizeText(QRectF(0, 0, 640.7, 480.2)), QStringLiteral("640 × 480"));
    EXPECT_EQ(PickerDrag::hintText(QStringLiteral("Drag over what to record as a GIF")),
              QStringLiteral("Drag over what to record as a GIF   ·   Esc to cancel"));
}

struct PickerFixture : ::testing::Test {
    QList<RecordingScreen> screens{{1, QRectF(0, 0, 800, 600), QRectF(0, 0, 800, 570), 1.0},
                                   {2, QRectF(800, 0, 640, 480), QRectF(800, 0, 640, 480), 1.0}};
    QPointF pointer{900, 100};
    std::optional<QRectF> rect;
    std::optional<RecordingScreen> screen;
    int calls = 0;

    LiveAreaPicker::Parts parts()
    {
        LiveAreaPicker::Parts p;
        p.screens = [this] { return screens; };
        p.pointer = [this] { return pointer; };
        p.translucent = [] { return false; };
        return p;
    }
    LiveAreaPicking::Completion completion()
    {
        return [this](std::optional<QRectF> r, std::optional<RecordingScreen> s) {
            ++calls;
            rect = r;
            screen = s;
        };
    }
};

using LiveAreaPickerTest = PickerFixture;

TEST_F(LiveAreaPickerTest, ComesUpOnTheDisplayUnderThePointerOnly)
{
    LiveAreaPicker picker(parts());
    picker.pick(QStringLiteral("Drag"), completion());
    ASSERT_NE(picker.view(), nullptr);
    ASSERT_TRUE(picker.screen().has_value());
    EXPECT_EQ(picker.screen()->displayID, 2u);
    EXPECT_EQ(picker.view()->size(), QSize(640, 480));
}

TEST_F(LiveAreaPickerTest, WithNoScreenAnswersNothingAtOnce)
{
    screens.clear();
    LiveAreaPicker picker(parts());
    picker.pick(QStringLiteral("Drag"), completion());
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(rect.has_value());
    EXPECT_FALSE(screen.has_value());
    EXPECT_EQ(picker.view(), nullptr);
}

TEST_F(LiveAreaPickerTest, ADragGivesTheAreaInGlobalPointsAndTheScreen)
{
    LiveAreaPicker picker(parts());
    picker.pick(QStringLiteral("Drag"), completion());
    PickerView *view = picker.view();
    // Qt's y runs down: the view's (10, 20)-(110, 70) is, with y up, 480 - 70 = 410 high at the bottom.
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(10, 20));
    QTest::mouseMove(view, QPoint(60, 40));
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(110, 70));
    ASSERT_EQ(calls, 1);
    ASSERT_TRUE(rect.has_value());
    EXPECT_EQ(*rect, QRectF(810, 410, 100, 50));
    ASSERT_TRUE(screen.has_value());
    EXPECT_EQ(screen->displayID, 2u);
    EXPECT_EQ(picker.view(), nullptr);
}

TEST_F(LiveAreaPickerTest, AShortDragLeavesThePickerUp)
{
    LiveAreaPicker picker(parts());
    picker.pick(QStringLiteral("Drag"), completion());
    QTest::mousePress(picker.view(), Qt::LeftButton, {}, QPoint(10, 20));
    QTest::mouseRelease(picker.view(), Qt::LeftButton, {}, QPoint(25, 220));
    EXPECT_EQ(calls, 0);
    ASSERT_NE(picker.view(), nullptr);
    EXPECT_FALSE(picker.view()->drag().selection().has_value());
}

TEST_F(LiveAreaPickerTest, EscapeDuringADragCancelsWithNothingTwice)
{
    LiveAreaPicker picker(parts());
    picker.pick(QStringLiteral("Drag"), completion());
    QTest::mousePress(picker.view(), Qt::LeftButton, {}, QPoint(10, 20));
    QTest::mouseMove(picker.view(), QPoint(200, 200));
    QTest::keyClick(picker.view(), Qt::Key_Escape);
    ASSERT_EQ(calls, 1);
    EXPECT_FALSE(rect.has_value());
    EXPECT_FALSE(screen.has_value());
    EXPECT_EQ(picker.view(), nullptr);
}

TEST_F(LiveAreaPickerTest, WithoutACompositorTheWindowIsCutToLinesAndTheDragsHoleIsOpen)
{
    LiveAreaPicker picker(parts());
    picker.pick(QStringLiteral("Drag"), completion());
    PickerView *view = picker.view();
    view->show();
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(100, 100));
    QTest::mouseMove(view, QPoint(300, 300));
    const QRegion shape = view->mask();
    // A quarter of the rows away from the drag and the pills.
    EXPECT_TRUE(shape.contains(QPoint(50, 400)));
    EXPECT_FALSE(shape.contains(QPoint(50, 401)));
    // Inside the drag nothing; on its edge the outline.
    EXPECT_FALSE(shape.contains(QPoint(200, 200)));
    EXPECT_TRUE(shape.contains(QPoint(99, 200)));
}

TEST_F(LiveAreaPickerTest, SeeThroughDimIsBlackAtAQuarterWithTheHoleClear)
{
    LiveAreaPicker::Parts p = parts();
    p.translucent = [] { return true; };
    LiveAreaPicker picker(p);
    picker.pick(QStringLiteral("Drag"), completion());
    PickerView *view = picker.view();
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(100, 100));
    QTest::mouseMove(view, QPoint(300, 300));
    QImage image(view->size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    view->render(&image);
    EXPECT_EQ(qAlpha(image.pixel(20, 400)), 64);
    EXPECT_EQ(qAlpha(image.pixel(200, 200)), 0);
    const QRgb outline = image.pixel(98, 200);
    EXPECT_GT(qRed(outline), 200);
    EXPECT_LT(qGreen(outline), 100);
}

} // namespace
