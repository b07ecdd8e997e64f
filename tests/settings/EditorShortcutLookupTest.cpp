#include "settings/EditorShortcutLookup.h"

#include <gtest/gtest.h>

namespace {

TEST(EditorShortcutLookup, ToolTipShowsTheShortcutOfTheMap)
{
    EditorShortcutMap map = EditorShortcuts::defaults();
    EXPECT_EQ(EditorShortcutLookup::toolTip("Copy", map, EditorShortcut::copy), "Copy (Ctrl+C)");
    EXPECT_EQ(EditorShortcutLookup::toolTip("Redo", map, EditorShortcut::redo), "Redo (Ctrl+Shift+Z)");
    EXPECT_EQ(EditorShortcutLookup::toolTip("Text", map, EditorShortcut::text), "Text (T)");
    map[EditorShortcut::copy] = Hotkey { 40, Hotkey::commandFlag };
    EXPECT_EQ(EditorShortcutLookup::toolTip("Copy", map, EditorShortcut::copy), "Copy (Ctrl+K)");
}

TEST(EditorShortcutLookup, AnUnassignedShortcutLeavesTheBareLabel)
{
    EditorShortcutMap map = EditorShortcuts::defaults();
    map[EditorShortcut::upload] = Hotkey::unassigned();
    EXPECT_EQ(EditorShortcutLookup::toolTip("Upload", map, EditorShortcut::upload), "Upload");
}

TEST(EditorShortcutLookup, AMissingEntryReadsItsDefault)
{
    const EditorShortcutMap empty;
    EXPECT_EQ(
        EditorShortcutLookup::shortcutFor(empty, EditorShortcut::save), (Hotkey { 1, Hotkey::commandFlag }));
}

TEST(EditorShortcutLookup, APressFindsItsShortcutByExactModifiers)
{
    EditorShortcutMap map = EditorShortcuts::defaults();
    EXPECT_EQ(EditorShortcutLookup::matching(map, { 6, Hotkey::commandFlag }), EditorShortcut::undo);
    EXPECT_EQ(EditorShortcutLookup::matching(map, { 6, Hotkey::commandFlag | Hotkey::shiftFlag }),
        EditorShortcut::redo);
    EXPECT_EQ(EditorShortcutLookup::matching(map, { 17, 0 }), EditorShortcut::text);
    EXPECT_EQ(EditorShortcutLookup::matching(map, { 17, Hotkey::shiftFlag }), std::nullopt);
    EXPECT_EQ(EditorShortcutLookup::matching(map, Hotkey::unassigned()), std::nullopt);

    map[EditorShortcut::copy] = Hotkey::unassigned();
    EXPECT_EQ(EditorShortcutLookup::matching(map, { 8, Hotkey::commandFlag }), std::nullopt);
    EXPECT_EQ(EditorShortcutLookup::matching(map, Hotkey::unassigned()), std::nullopt);
}

} // namespace
