#include "ToolbarFixture.h"
#include "toolbars/ToolbarTable.h"

#include <gtest/gtest.h>

using glimpso::Tool;

TEST(ToolbarTable, ToolsAreInTheTablesOrderWithTheirIcons)
{
    const std::vector<Tool> expected{Tool::move, Tool::pencil,  Tool::highlight, Tool::line,     Tool::arrow,
                                     Tool::rect, Tool::ellipse, Tool::text,      Tool::sequence, Tool::mosaic};
    ASSERT_EQ(ToolbarTable::tools.size(), expected.size());
    for (size_t index = 0; index < expected.size(); ++index)
        EXPECT_EQ(ToolbarTable::tools[index].tool, expected[index]) << index;
    EXPECT_EQ(ToolbarTable::tools[0].icon, Lucide::mousePointer);
    EXPECT_EQ(ToolbarTable::tools[4].icon, Lucide::arrowUpRight);
    EXPECT_EQ(ToolbarTable::tools[8].icon, Lucide::counter);
    EXPECT_EQ(ToolbarTable::tools[9].icon, Lucide::mosaic);
}

TEST(ToolbarTable, ToolTipsOfToolsWithoutShortcutAreTheirLabels)
{
    ToolbarFixture fixture;
    EXPECT_EQ(ToolbarTable::toolTip(ToolbarTable::tools[0], fixture.settings), "Move / select");
    EXPECT_EQ(ToolbarTable::toolTip(ToolbarTable::tools[9], fixture.settings), "Mosaic / redact");
}

TEST(ToolbarTable, TheTextToolTipNamesTheShortcutOfTheSettings)
{
    ToolbarFixture fixture;
    EXPECT_EQ(ToolbarTable::toolTip(ToolbarTable::tools[7], fixture.settings), "Text (T)");
    EditorShortcutMap map = fixture.settings.editorShortcuts();
    map[EditorShortcut::text] = Hotkey{11, 0}; // B
    fixture.settings.editorShortcuts.set(map);
    EXPECT_EQ(ToolbarTable::toolTip(ToolbarTable::tools[7], fixture.settings), "Text (B)");
}

TEST(ToolbarTable, ActionToolTips)
{
    ToolbarFixture fixture;
    using ToolbarTable::ActionChip;
    const auto tip = [&](ActionChip chip) { return ToolbarTable::toolTip(ToolbarTable::entry(chip), fixture.settings); };
    EXPECT_EQ(tip(ActionChip::undo), "Undo (Ctrl+Z)");
    EXPECT_EQ(tip(ActionChip::redo), "Redo (Ctrl+Shift+Z)");
    EXPECT_EQ(tip(ActionChip::copy), "Copy (Ctrl+C)");
    EXPECT_EQ(tip(ActionChip::save), "Save (Ctrl+S)");
    EXPECT_EQ(tip(ActionChip::cancel), "Cancel (esc)");
    // Copy text names the global capture-text shortcut.
    EXPECT_EQ(tip(ActionChip::copyText), "Copy Text (" + fixture.settings.hotkeyText().displayString() + ")");
    fixture.settings.hotkeyText.set(Hotkey::unassigned());
    EXPECT_EQ(tip(ActionChip::copyText), "Copy Text");
}

TEST(ToolbarTable, ASecondClickOnTheSelectedToolPutsItDown)
{
    EXPECT_EQ(ToolbarTable::toolAfterClick(Tool::arrow, Tool::arrow), Tool::none);
    EXPECT_EQ(ToolbarTable::toolAfterClick(Tool::arrow, Tool::rect), Tool::rect);
    EXPECT_EQ(ToolbarTable::toolAfterClick(Tool::none, Tool::rect), Tool::rect);
}
