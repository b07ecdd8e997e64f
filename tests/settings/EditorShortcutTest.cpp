#include "settings/EditorShortcut.h"

#include <gtest/gtest.h>

namespace {

TEST(EditorShortcut, DefaultsShowAsLinuxShortcuts)
{
    using enum EditorShortcut;
    EXPECT_EQ(EditorShortcuts::defaultHotkey(copy).displayString(), "Ctrl+C");
    EXPECT_EQ(EditorShortcuts::defaultHotkey(save).displayString(), "Ctrl+S");
    EXPECT_EQ(EditorShortcuts::defaultHotkey(upload).displayString(), "Ctrl+U");
    EXPECT_EQ(EditorShortcuts::defaultHotkey(undo).displayString(), "Ctrl+Z");
    EXPECT_EQ(EditorShortcuts::defaultHotkey(redo).displayString(), "Ctrl+Shift+Z");
    EXPECT_EQ(EditorShortcuts::defaultHotkey(text).displayString(), "T");
}

TEST(EditorShortcut, RawTextIsTheCaseName)
{
    for (EditorShortcut shortcut : EditorShortcuts::allCases)
        EXPECT_EQ(EditorShortcuts::fromRawText(EditorShortcuts::rawText(shortcut)), shortcut);
    EXPECT_EQ(EditorShortcuts::rawText(EditorShortcut::upload), "upload");
    EXPECT_FALSE(EditorShortcuts::fromRawText("Copy"));
}

TEST(EditorShortcut, EncodeDecodeRoundTrip)
{
    EditorShortcutMap map = EditorShortcuts::defaults();
    map[EditorShortcut::text] = Hotkey{14, 0};
    EXPECT_EQ(EditorShortcuts::decode(EditorShortcuts::encode(map)), map);
}

TEST(EditorShortcut, OlderObjectWithFewerShortcutsGainsTheNewOnes)
{
    const auto map = EditorShortcuts::decode(R"({"undo":{"keyCode":6,"modifierFlagsRaw":524288}})");
    EXPECT_EQ(map.size(), 6u);
    EXPECT_EQ(map.at(EditorShortcut::undo), (Hotkey{6, Hotkey::optionFlag}));
    EXPECT_EQ(map.at(EditorShortcut::redo), EditorShortcuts::defaultHotkey(EditorShortcut::redo));
}

TEST(EditorShortcut, OneMalformedRecordMakesTheWholeObjectUnreadable)
{
    const auto map = EditorShortcuts::decode(R"({"undo":{"keyCode":6,"modifierFlagsRaw":524288},"copy":{"keyCode":"c"}})");
    EXPECT_EQ(map, EditorShortcuts::defaults());
}

TEST(EditorShortcut, EmptyDataReadsAllDefaults)
{
    EXPECT_EQ(EditorShortcuts::decode({}), EditorShortcuts::defaults());
}

} // namespace
