#include "settingsui/HotkeyRecorderBinding.h"

#include "SettingsFakes.h"
#include "settings/AppSettings.h"
#include "settingsui/RecorderView.h"

#include <QApplication>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

namespace {

class HotkeyRecorderBindingTest : public ::testing::Test
{
protected:
    MemorySettingsStorage storage;
    InertLoginItem loginItem;
    AppSettings settings { storage, loginItem };
    // As on a settings page: the recorder is one control of a window.
    QWidget window;
    RecorderView view { &window };
    int beeps = 0;

    void SetUp() override
    {
        view.onBeep = [this] { ++beeps; };
        window.show();
        QApplication::setActiveWindow(&window);
    }
    void record(Qt::Key key, Qt::KeyboardModifiers modifiers)
    {
        QTest::mouseClick(&view, Qt::LeftButton);
        QTest::keyClick(&view, key, modifiers);
    }
};

TEST_F(HotkeyRecorderBindingTest, AGlobalShortcutShowsTheSettingAndWritesItBack)
{
    HotkeyRecorderBinding::forGlobal(view, settings, settings.hotkeyRegion);
    EXPECT_EQ(view.labelText(), "Ctrl+Shift+2");
    EXPECT_FALSE(view.allowsBareKey());
    record(Qt::Key_4, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(settings.hotkeyRegion(), (Hotkey { 21, Hotkey::commandFlag | Hotkey::optionFlag }));
    EXPECT_TRUE(storage.values.value("settings.hotkey.region").toString().contains("\"keyCode\":21"));
}

TEST_F(HotkeyRecorderBindingTest, AGlobalShortcutRefusesABareKey)
{
    HotkeyRecorderBinding::forGlobal(view, settings, settings.hotkeyRegion);
    record(Qt::Key_T, Qt::NoModifier);
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(settings.hotkeyRegion(), (Hotkey { 19, 0x120000 }));
}

TEST_F(HotkeyRecorderBindingTest, EscapeUnassignsTheSetting)
{
    HotkeyRecorderBinding::forGlobal(view, settings, settings.hotkeyRegion);
    record(Qt::Key_Escape, Qt::NoModifier);
    EXPECT_FALSE(settings.hotkeyRegion().isAssigned());
    EXPECT_EQ(view.labelText(), "Click to record");
}

TEST_F(HotkeyRecorderBindingTest, AChangeFromElsewhereShowsInTheView)
{
    HotkeyRecorderBinding::forGlobal(view, settings, settings.hotkeyAllDisplays);
    settings.hotkeyAllDisplays.set({ 20, 0x120000 });
    EXPECT_EQ(view.labelText(), "Ctrl+Shift+3");
    settings.resetShortcuts();
    EXPECT_EQ(view.labelText(), "Ctrl+Shift+1");
}

TEST_F(HotkeyRecorderBindingTest, AnEditorShortcutTakesABareKeyIntoTheMap)
{
    HotkeyRecorderBinding::forEditor(view, settings, EditorShortcut::text);
    EXPECT_EQ(view.labelText(), "T");
    EXPECT_TRUE(view.allowsBareKey());
    record(Qt::Key_E, Qt::NoModifier);
    EXPECT_EQ(beeps, 0);
    EXPECT_EQ(settings.editorShortcut(EditorShortcut::text), (Hotkey { 14, 0 }));
    EXPECT_EQ(settings.editorShortcut(EditorShortcut::copy), (Hotkey { 8, Hotkey::commandFlag }));
}

} // namespace
