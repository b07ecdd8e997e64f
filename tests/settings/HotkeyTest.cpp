#include "settings/Hotkey.h"
#include "settings/KeyTable.h"

#include <QJsonDocument>
#include <gtest/gtest.h>

namespace {

TEST(Hotkey, DefaultRegionShortcutReadsCtrlShift2)
{
    EXPECT_EQ((Hotkey{19, 0x120000}).displayString(), "Ctrl+Shift+2");
}

TEST(Hotkey, ModifiersShowInCtrlAltShiftSuperOrder)
{
    const Hotkey all{0, Hotkey::shiftFlag | Hotkey::controlFlag | Hotkey::optionFlag | Hotkey::commandFlag};
    EXPECT_EQ(all.displayString(), "Ctrl+Alt+Shift+Super+A");
    EXPECT_EQ((Hotkey{23, 0x1a0000}).displayString(), "Ctrl+Alt+Shift+5");
}

TEST(Hotkey, BareKeyShowsItsName)
{
    EXPECT_EQ((Hotkey{17, 0}).displayString(), "T");
}

TEST(Hotkey, UnassignedShowsADash)
{
    EXPECT_EQ(Hotkey::unassigned().displayString(), "—");
    EXPECT_FALSE(Hotkey::unassigned().isAssigned());
    EXPECT_EQ(Hotkey::unassigned().modifierFlagsRaw, 0u);
}

TEST(Hotkey, KeyWithoutANameShowsItsCode)
{
    EXPECT_EQ(Hotkey::keyName(110), "key(110)");
    EXPECT_EQ((Hotkey{110, Hotkey::commandFlag}).displayString(), "Ctrl+key(110)");
}

TEST(Hotkey, SpecialKeysUseLinuxWords)
{
    EXPECT_EQ(Hotkey::keyName(36), "Enter");
    EXPECT_EQ(Hotkey::keyName(48), "Tab");
    EXPECT_EQ(Hotkey::keyName(49), "Space");
    EXPECT_EQ(Hotkey::keyName(51), "Backspace");
    EXPECT_EQ(Hotkey::keyName(53), "Esc");
    EXPECT_EQ(Hotkey::keyName(122), "F1");
    EXPECT_EQ(Hotkey::keyName(64), "F17");
    EXPECT_EQ(Hotkey::keyName(0x8001), "Print");
}

TEST(Hotkey, JsonRoundTripKeepsBothFields)
{
    const Hotkey original{19, 1179648};
    EXPECT_EQ(Hotkey::fromJsonText(original.toJsonText()), original);
    const QJsonObject json = QJsonDocument::fromJson(original.toJsonText()).object();
    EXPECT_EQ(json.value("keyCode").toInt(), 19);
    EXPECT_EQ(json.value("modifierFlagsRaw").toInt(), 1179648);
}

TEST(Hotkey, UnassignedSurvivesTheRoundTrip)
{
    EXPECT_EQ(Hotkey::fromJsonText(Hotkey::unassigned().toJsonText()), Hotkey::unassigned());
}

TEST(Hotkey, CorruptJsonDoesNotDecode)
{
    EXPECT_FALSE(Hotkey::fromJsonText("{"));
    EXPECT_FALSE(Hotkey::fromJsonText("[]"));
    EXPECT_FALSE(Hotkey::fromJsonText(R"({"keyCode":19})"));
    EXPECT_FALSE(Hotkey::fromJsonText(R"({"keyCode":-1,"modifierFlagsRaw":0})"));
    EXPECT_FALSE(Hotkey::fromJsonText(R"({"keyCode":70000,"modifierFlagsRaw":0})"));
    EXPECT_FALSE(Hotkey::fromJsonText(R"({"keyCode":1.5,"modifierFlagsRaw":0})"));
}

TEST(Hotkey, EqualityComparesBothFields)
{
    EXPECT_EQ((Hotkey{1, 2}), (Hotkey{1, 2}));
    EXPECT_NE((Hotkey{1, 2}), (Hotkey{1, 3}));
    EXPECT_NE((Hotkey{1, 2}), (Hotkey{2, 2}));
}

TEST(Hotkey, MenuShowsLettersDigitsAndFunctionKeys)
{
    EXPECT_EQ((Hotkey{19, 0x120000}).menuKeyEquivalent(), QKeySequence("Ctrl+Shift+2"));
    EXPECT_EQ((Hotkey{4, Hotkey::commandFlag}).menuKeyEquivalent(), QKeySequence("Ctrl+H"));
    EXPECT_EQ((Hotkey{122, 0}).menuKeyEquivalent(), QKeySequence("F1"));
    EXPECT_EQ((Hotkey{36, Hotkey::commandFlag}).menuKeyEquivalent(), QKeySequence("Ctrl+Return"));
    EXPECT_EQ((Hotkey{49, 0}).menuKeyEquivalent(), QKeySequence("Space"));
}

TEST(Hotkey, MenuShowsNoPunctuationArrowsOrCodesAbove122)
{
    EXPECT_FALSE((Hotkey{24, Hotkey::commandFlag}).menuKeyEquivalent()); // =
    EXPECT_FALSE((Hotkey{123, Hotkey::commandFlag}).menuKeyEquivalent()); // left arrow
    EXPECT_FALSE((Hotkey{126, 0}).menuKeyEquivalent());
    EXPECT_FALSE((Hotkey{0x8001, 0}).menuKeyEquivalent()); // Print
    EXPECT_FALSE(Hotkey::unassigned().menuKeyEquivalent());
}

TEST(Hotkey, CommandIsCtrlAndControlIsSuperInQtTerms)
{
    const QKeySequence sequence = (Hotkey{8, Hotkey::commandFlag | Hotkey::controlFlag}).keySequence();
    ASSERT_EQ(sequence.count(), 1);
    EXPECT_EQ(sequence[0].keyboardModifiers(), Qt::ControlModifier | Qt::MetaModifier);
    EXPECT_EQ(sequence[0].key(), Qt::Key_C);
}

TEST(Hotkey, KeyEventMapsBackToTheStoredForm)
{
    EXPECT_EQ(Hotkey::fromKeyEvent(Qt::Key_2, Qt::ControlModifier | Qt::ShiftModifier), (Hotkey{19, 0x120000}));
    EXPECT_EQ(Hotkey::fromKeyEvent(Qt::Key_T, Qt::NoModifier), (Hotkey{17, 0}));
    EXPECT_EQ(Hotkey::fromKeyEvent(Qt::Key_Print, Qt::NoModifier), (Hotkey{0x8001, 0}));
    EXPECT_EQ(Hotkey::fromKeyEvent(Qt::Key_5, Qt::KeypadModifier), (Hotkey{0x8015, 0}));
    EXPECT_FALSE(Hotkey::fromKeyEvent(Qt::Key_VolumeUp, Qt::NoModifier));
}

TEST(Hotkey, ShiftedCharacterReadsAsTheKeyUnderIt)
{
    // What Qt reports for Ctrl+Shift+2 and Shift+1 on a US keyboard.
    EXPECT_EQ(Hotkey::fromKeyEvent(Qt::Key_At, Qt::ControlModifier | Qt::ShiftModifier), (Hotkey{19, 0x120000}));
    EXPECT_EQ(Hotkey::fromKeyEvent(Qt::Key_Exclam, Qt::ShiftModifier), (Hotkey{18, Hotkey::shiftFlag}));
    EXPECT_EQ(Hotkey::fromKeyEvent(Qt::Key_Question, Qt::ShiftModifier), (Hotkey{44, Hotkey::shiftFlag}));
    EXPECT_EQ(Hotkey::fromKeyEvent(Qt::Key_Backtab, Qt::ShiftModifier), (Hotkey{48, Hotkey::shiftFlag}));
    // Without Shift an "@" is no key of the table.
    EXPECT_FALSE(Hotkey::fromKeyEvent(Qt::Key_At, Qt::ControlModifier));
}

TEST(Hotkey, EveryCodeWithEveryModifierRoundTripsThroughQt)
{
    const uint64_t bits[] = {Hotkey::shiftFlag, Hotkey::controlFlag, Hotkey::optionFlag, Hotkey::commandFlag};
    int checked = 0;
    for (const KeyTableEntry &entry : KeyTable::entries()) {
        for (int mask = 0; mask < 16; ++mask) {
            uint64_t flags = 0;
            for (int bit = 0; bit < 4; ++bit) {
                if (mask & (1 << bit))
                    flags |= bits[bit];
            }
            const Hotkey hotkey{entry.code, flags};
            const QKeySequence sequence = hotkey.keySequence();
            ASSERT_EQ(sequence.count(), 1) << entry.code;
            const QKeyCombination combination = sequence[0];
            EXPECT_EQ(Hotkey::fromKeyEvent(combination.key(), combination.keyboardModifiers()), hotkey)
                << entry.code << " flags " << flags;
            ++checked;
        }
    }
    EXPECT_EQ(checked, int(KeyTable::entries().size()) * 16);
}

} // namespace
