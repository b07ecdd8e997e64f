#include "EditorFixture.h"

using namespace glimpso;

namespace {

constexpr uint64_t ctrl = Hotkey::commandFlag;
constexpr uint64_t shift = Hotkey::shiftFlag;
constexpr uint64_t capsLock = 0x10000;

const Hotkey ctrlC{8, ctrl}, ctrlS{1, ctrl}, ctrlU{32, ctrl}, ctrlZ{6, ctrl}, ctrlShiftZ{6, ctrl | shift}, bareT{17, 0},
    enter{36, 0};

} // namespace

class EditorKeyPresses : public EditorFixture {
protected:
    // Two rectangles, then the second undone: something to undo and to redo.
    void drawTwoAndUndoOne()
    {
        selectTool(Tool::rect);
        drag({{10, 10}, {50, 50}});
        drag({{100, 100}, {150, 150}});
        editor->handleToolbarAction(EditorAction::undo());
    }
};

TEST_F(EditorKeyPresses, OutputShortcutsReachOnOutput)
{
    EXPECT_TRUE(editor->keyDown(ctrlC));
    EXPECT_TRUE(editor->keyDown(ctrlS));
    EXPECT_TRUE(editor->keyDown(ctrlU));
    EXPECT_EQ(outputs, (QList<EditorAction::Kind>{EditorAction::Kind::copy, EditorAction::Kind::save,
                                                   EditorAction::Kind::upload}));
}

TEST_F(EditorKeyPresses, OutputShortcutsInATextFieldCommitTheTextFirst)
{
    for (const Hotkey &key : {ctrlC, ctrlS, ctrlU}) {
        FakeTextField *field = openTextField({50, 50});
        ASSERT_NE(field, nullptr);
        field->typed = QStringLiteral("x");
        const qsizetype before = editor->annotations().size();
        QList<qsizetype> sizesAtOutput;
        editor->setOnOutput([&](const EditorAction &) { sizesAtOutput.append(editor->annotations().size()); });
        EXPECT_TRUE(editor->keyDown(key));
        EXPECT_FALSE(editor->hasTextField());
        EXPECT_EQ(sizesAtOutput, (QList<qsizetype>{before + 1}));
    }
}

TEST_F(EditorKeyPresses, UndoAndRedoShortcuts)
{
    drawTwoAndUndoOne();
    ASSERT_EQ(editor->annotations().size(), 1);
    EXPECT_TRUE(editor->keyDown(ctrlShiftZ));
    EXPECT_EQ(editor->annotations().size(), 2);
    EXPECT_TRUE(editor->keyDown(ctrlZ));
    EXPECT_TRUE(editor->keyDown(ctrlZ));
    EXPECT_TRUE(editor->annotations().isEmpty());
}

TEST_F(EditorKeyPresses, UndoInATextFieldUndoesTheLastMarkAndKeepsTheField)
{
    drawTwoAndUndoOne();
    FakeTextField *field = openTextField({200, 200});
    field->typed = QStringLiteral("draft");
    EXPECT_TRUE(editor->keyDown(ctrlZ));
    EXPECT_TRUE(editor->annotations().isEmpty());
    EXPECT_TRUE(editor->hasTextField());
    EXPECT_TRUE(editor->keyDown(ctrlShiftZ));
    EXPECT_EQ(editor->annotations().size(), 1);
    EXPECT_TRUE(editor->hasTextField());
}

TEST_F(EditorKeyPresses, TSelectsTheTextToolAndTellsTheToolbar)
{
    selectTool(Tool::rect);
    EXPECT_TRUE(editor->keyDown(bareT));
    EXPECT_EQ(editor->currentTool(), Tool::text);
    EXPECT_EQ(toolbar.tools, (QList<Tool>{Tool::text}));
    EXPECT_EQ(toolbar.textOptions.last(), TextOptions{});
}

TEST_F(EditorKeyPresses, TInATextFieldIsTyping)
{
    openTextField({50, 50});
    ASSERT_TRUE(editor->hasTextField());
    toolbar.tools.clear();
    EXPECT_FALSE(editor->keyDown(bareT, QStringLiteral("t")));
    EXPECT_TRUE(editor->hasTextField());
    EXPECT_TRUE(toolbar.tools.isEmpty());
}

TEST_F(EditorKeyPresses, ReturnCopiesWithoutATextField)
{
    selectTool(Tool::rect);
    EXPECT_TRUE(editor->keyDown(enter));
    EXPECT_TRUE(editor->keyDown(Hotkey{0x801f, 0})); // Enter on the keypad
    EXPECT_EQ(outputs, (QList<EditorAction::Kind>{EditorAction::Kind::copy, EditorAction::Kind::copy}));
}

TEST_F(EditorKeyPresses, ReturnInATextFieldIsTheFields)
{
    openTextField({50, 50});
    EXPECT_FALSE(editor->keyDown(enter));
    EXPECT_TRUE(outputs.isEmpty());
    EXPECT_TRUE(editor->hasTextField());
}

TEST_F(EditorKeyPresses, CapsLockDoesNotMatter)
{
    EXPECT_TRUE(editor->keyDown(Hotkey{8, ctrl | capsLock}));
    EXPECT_EQ(outputs, (QList<EditorAction::Kind>{EditorAction::Kind::copy}));
}

TEST_F(EditorKeyPresses, ExtraModifiersDoNotMatch)
{
    EXPECT_FALSE(editor->keyDown(Hotkey{8, ctrl | Hotkey::optionFlag}));
    EXPECT_FALSE(editor->keyDown(Hotkey{8, 0}));
    EXPECT_FALSE(editor->keyDown(Hotkey{17, shift}));
    EXPECT_TRUE(outputs.isEmpty());
    EXPECT_EQ(editor->currentTool(), Tool::none);
}

TEST_F(EditorKeyPresses, BindingsComeFromTheSettings)
{
    settings.setEditorShortcut(EditorShortcut::text, Hotkey{14, 0});       // E
    settings.setEditorShortcut(EditorShortcut::save, Hotkey{1, ctrl | shift}); // Ctrl+Shift+S
    EXPECT_FALSE(editor->keyDown(bareT));
    EXPECT_FALSE(editor->keyDown(ctrlS));
    EXPECT_TRUE(editor->keyDown(Hotkey{14, 0}));
    EXPECT_EQ(editor->currentTool(), Tool::text);
    EXPECT_TRUE(editor->keyDown(Hotkey{1, ctrl | shift}));
    EXPECT_EQ(outputs, (QList<EditorAction::Kind>{EditorAction::Kind::save}));
}

TEST_F(EditorKeyPresses, AnUnsetShortcutIsSkipped)
{
    settings.setEditorShortcut(EditorShortcut::copy, Hotkey::unassigned());
    EXPECT_FALSE(editor->keyDown(ctrlC));
    EXPECT_FALSE(editor->keyDown(Hotkey{Hotkey::unassignedCode, 0}));
    EXPECT_TRUE(outputs.isEmpty());
}

TEST_F(EditorKeyPresses, TheFirstBindingInOrderWins)
{
    // Both copy and text on Ctrl+T: copy comes first in the walk.
    settings.setEditorShortcut(EditorShortcut::copy, Hotkey{17, ctrl});
    settings.setEditorShortcut(EditorShortcut::text, Hotkey{17, ctrl});
    EXPECT_TRUE(editor->keyDown(Hotkey{17, ctrl}));
    EXPECT_EQ(outputs, (QList<EditorAction::Kind>{EditorAction::Kind::copy}));
    EXPECT_EQ(editor->currentTool(), Tool::none);
}

TEST_F(EditorKeyPresses, BackspaceAndDeleteRemoveTheSelection)
{
    selectTool(Tool::line);
    drag({{10, 10}, {60, 10}});
    drag({{100, 100}, {160, 100}});
    ASSERT_TRUE(editor->hasSelection());
    EXPECT_TRUE(editor->keyDown(Hotkey{51, 0}));
    ASSERT_EQ(editor->annotations().size(), 1);
    selectTool(Tool::move);
    click({30, 10});
    EXPECT_TRUE(editor->keyDown(Hotkey{117, 0}));
    EXPECT_TRUE(editor->annotations().isEmpty());
    EXPECT_EQ(editor->redoStack().size(), 2);
}

TEST_F(EditorKeyPresses, OtherKeysAreNotTaken)
{
    EXPECT_FALSE(editor->keyDown(Hotkey{0, 0}));    // A
    EXPECT_FALSE(editor->keyDown(Hotkey{123, 0}));  // left arrow
    EXPECT_FALSE(editor->keyDown(Hotkey{53, 0}));   // Escape belongs to the host
}
