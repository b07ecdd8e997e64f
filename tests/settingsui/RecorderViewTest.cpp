#include "settingsui/RecorderView.h"

#include <QApplication>
#include <QImage>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

namespace {

class RecorderViewTest : public ::testing::Test
{
protected:
    // As on a settings page: the recorder is one control of a window.
    QWidget window;
    RecorderView view { &window };
    std::vector<Hotkey> captured;
    int beeps = 0;

    void SetUp() override
    {
        view.onCapture = [this](const Hotkey &hotkey) { captured.push_back(hotkey); };
        view.onBeep = [this] { ++beeps; };
        window.show();
        QApplication::setActiveWindow(&window);
    }

    void startListening()
    {
        QTest::mouseClick(&view, Qt::LeftButton);
        ASSERT_TRUE(view.isRecording());
    }
};

TEST_F(RecorderViewTest, IsTheSizeOfASmallButton)
{
    EXPECT_EQ(view.sizeHint(), QSize(140, 28));
}

TEST_F(RecorderViewTest, AtRestShowsClickToRecordOrTheShortcut)
{
    EXPECT_FALSE(view.isRecording());
    EXPECT_EQ(view.labelText(), "Click to record");
    view.setHotkey({ 19, 0x120000 });
    EXPECT_EQ(view.labelText(), "Ctrl+Shift+2");
}

TEST_F(RecorderViewTest, AClickStartsListening)
{
    startListening();
    EXPECT_EQ(view.labelText(), "Press shortcut…");
    EXPECT_TRUE(view.property(RecorderView::listeningProperty).toBool());
}

TEST_F(RecorderViewTest, AShortcutWithModifiersIsRecordedAndListeningEnds)
{
    startListening();
    QTest::keyClick(&view, Qt::Key_At, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(captured.size(), 1u);
    EXPECT_EQ(captured[0], (Hotkey { 19, 0x120000 }));
    EXPECT_EQ(view.hotkey(), (Hotkey { 19, 0x120000 }));
    EXPECT_FALSE(view.isRecording());
    EXPECT_EQ(view.labelText(), "Ctrl+Shift+2");
    EXPECT_FALSE(view.property(RecorderView::listeningProperty).toBool());
}

TEST_F(RecorderViewTest, ABareKeyBeepsAndKeepsListeningWhenNotAllowed)
{
    view.setAllowsBareKey(false);
    startListening();
    QTest::keyClick(&view, Qt::Key_T);
    EXPECT_EQ(beeps, 1);
    EXPECT_TRUE(captured.empty());
    EXPECT_TRUE(view.isRecording());
    EXPECT_EQ(view.labelText(), "Press shortcut…");
}

TEST_F(RecorderViewTest, ABareKeyIsRecordedWhenAllowed)
{
    view.setAllowsBareKey(true);
    startListening();
    QTest::keyClick(&view, Qt::Key_T);
    EXPECT_EQ(beeps, 0);
    ASSERT_EQ(captured.size(), 1u);
    EXPECT_EQ(captured[0], (Hotkey { 17, 0 }));
    EXPECT_FALSE(view.isRecording());
}

TEST_F(RecorderViewTest, EscapeClearsTheShortcutAndIsNeverRecorded)
{
    view.setHotkey({ 19, 0x120000 });
    startListening();
    QTest::keyClick(&view, Qt::Key_Escape, Qt::ControlModifier);
    ASSERT_EQ(captured.size(), 1u);
    EXPECT_EQ(captured[0], Hotkey::unassigned());
    EXPECT_FALSE(view.hotkey().isAssigned());
    EXPECT_FALSE(view.isRecording());
    EXPECT_EQ(view.labelText(), "Click to record");
}

TEST_F(RecorderViewTest, ModifiersAloneWaitForAKey)
{
    startListening();
    QTest::keyPress(&view, Qt::Key_Control, Qt::ControlModifier);
    QTest::keyPress(&view, Qt::Key_Shift, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(view.isRecording());
    EXPECT_TRUE(captured.empty());
    EXPECT_EQ(beeps, 0);
}

TEST_F(RecorderViewTest, TabIsRecordedInsteadOfMovingTheFocus)
{
    startListening();
    QTest::keyClick(&view, Qt::Key_Tab, Qt::ControlModifier);
    ASSERT_EQ(captured.size(), 1u);
    EXPECT_EQ(captured[0], (Hotkey { 48, Hotkey::commandFlag }));
}

TEST_F(RecorderViewTest, AKeyOutsideTheTableBeeps)
{
    startListening();
    QTest::keyClick(&view, Qt::Key_VolumeUp, Qt::ControlModifier);
    EXPECT_EQ(beeps, 1);
    EXPECT_TRUE(view.isRecording());
}

TEST_F(RecorderViewTest, KeysOutsideListeningAreIgnored)
{
    QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(captured.empty());
}

TEST_F(RecorderViewTest, TheDesktopsKeyMapWinsOverQtsCharacter)
{
    // A layout where the key Qt calls "@" is not the 2 of a US keyboard.
    view.keyCodeForScanCode = [](quint32) { return std::optional<uint16_t>(20); };
    startListening();
    QTest::keyClick(&view, Qt::Key_At, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(captured.size(), 1u);
    EXPECT_EQ(captured[0], (Hotkey { 20, 0x120000 }));
}

TEST_F(RecorderViewTest, TheBorderTakesTheAccentWhileListening)
{
    auto borderPixel = [this] {
        QImage image(view.size(), QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        view.render(&image);
        return image.pixelColor(view.width() / 2, 0);
    };
    const QColor atRest = borderPixel();
    startListening();
    const QColor listening = borderPixel();
    EXPECT_NE(atRest, listening);
}

TEST_F(RecorderViewTest, LosingTheFocusStopsListening)
{
    startListening();
    view.clearFocus();
    EXPECT_FALSE(view.isRecording());
    EXPECT_TRUE(captured.empty());
}

} // namespace
