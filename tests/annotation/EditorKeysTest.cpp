#include "annotation/EditorKeys.h"

#include <gtest/gtest.h>

using namespace glimpso;

TEST(EditorKeys, DefaultsMatchInTheirOrder)
{
    const EditorShortcutMap defaults = EditorShortcuts::defaults();
    EXPECT_EQ(EditorKeys::match(defaults, Hotkey{8, 0x100000}), EditorShortcut::copy);
    EXPECT_EQ(EditorKeys::match(defaults, Hotkey{1, 0x100000}), EditorShortcut::save);
    EXPECT_EQ(EditorKeys::match(defaults, Hotkey{32, 0x100000}), EditorShortcut::upload);
    EXPECT_EQ(EditorKeys::match(defaults, Hotkey{6, 0x100000}), EditorShortcut::undo);
    EXPECT_EQ(EditorKeys::match(defaults, Hotkey{6, 0x120000}), EditorShortcut::redo);
    EXPECT_EQ(EditorKeys::match(defaults, Hotkey{17, 0}), EditorShortcut::text);
    EXPECT_EQ(EditorKeys::match(defaults, Hotkey{17, 0x100000}), std::nullopt);
}

TEST(EditorKeys, AMissingEntryFallsBackToItsDefault)
{
    EXPECT_EQ(EditorKeys::match({}, Hotkey{6, 0x100000}), EditorShortcut::undo);
}

TEST(EditorKeys, OnlyTheDeviceIndependentBitsCount)
{
    EXPECT_EQ(EditorKeys::match(EditorShortcuts::defaults(), Hotkey{8, 0x100000 | 0x10000 | 0x100}), EditorShortcut::copy);
}

TEST(EditorKeys, FixedKeys)
{
    EXPECT_TRUE(EditorKeys::isDelete(Hotkey{51, 0}));
    EXPECT_TRUE(EditorKeys::isDelete(Hotkey{117, 0}));
    EXPECT_FALSE(EditorKeys::isDelete(Hotkey{53, 0}));
    EXPECT_TRUE(EditorKeys::isReturn(Hotkey{36, 0}));
    EXPECT_TRUE(EditorKeys::isReturn(Hotkey{0x801f, 0}));
    EXPECT_FALSE(EditorKeys::isReturn(Hotkey{48, 0}));
    EXPECT_TRUE(EditorKeys::isBare(Hotkey{17, 0x10000}));
    EXPECT_FALSE(EditorKeys::isBare(Hotkey{17, 0x20000}));
}

TEST(EditorKeys, QtKeyEventsReachTheSameCodes)
{
    EXPECT_TRUE(EditorKeys::isDelete(*Hotkey::fromKeyEvent(Qt::Key_Backspace, {})));
    EXPECT_TRUE(EditorKeys::isDelete(*Hotkey::fromKeyEvent(Qt::Key_Delete, {})));
    EXPECT_TRUE(EditorKeys::isReturn(*Hotkey::fromKeyEvent(Qt::Key_Return, {})));
    EXPECT_TRUE(EditorKeys::isReturn(*Hotkey::fromKeyEvent(Qt::Key_Enter, Qt::KeypadModifier)));
    EXPECT_EQ(Hotkey::fromKeyEvent(Qt::Key_Escape, {})->keyCode, EditorKeys::escape);
    EXPECT_EQ(EditorKeys::match(EditorShortcuts::defaults(),
                                *Hotkey::fromKeyEvent(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier)),
              EditorShortcut::redo);
}
