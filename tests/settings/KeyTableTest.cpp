#include "settings/Hotkey.h"
#include "settings/KeyTable.h"

#include <QSet>
#include <gtest/gtest.h>

namespace {

// Every code the settings format names, with the name it is shown by.
const std::vector<std::pair<uint16_t, QString>> kFormatKeys = {
    {0, "A"}, {1, "S"}, {2, "D"}, {3, "F"}, {4, "H"}, {5, "G"}, {6, "Z"}, {7, "X"}, {8, "C"}, {9, "V"},
    {11, "B"}, {12, "Q"}, {13, "W"}, {14, "E"}, {15, "R"}, {16, "Y"}, {17, "T"},
    {18, "1"}, {19, "2"}, {20, "3"}, {21, "4"}, {22, "6"}, {23, "5"},
    {24, "="}, {25, "9"}, {26, "7"}, {27, "-"}, {28, "8"}, {29, "0"}, {30, "]"},
    {31, "O"}, {32, "U"}, {33, "["}, {34, "I"}, {35, "P"}, {36, "Enter"},
    {37, "L"}, {38, "J"}, {39, "'"}, {40, "K"}, {41, ";"}, {42, "\\"}, {43, ","}, {44, "/"}, {45, "N"},
    {46, "M"}, {47, "."}, {48, "Tab"}, {49, "Space"}, {50, "`"}, {51, "Backspace"}, {53, "Esc"},
    {64, "F17"}, {79, "F18"}, {80, "F19"}, {90, "F20"},
    {96, "F5"}, {97, "F6"}, {98, "F7"}, {99, "F3"}, {100, "F8"}, {101, "F9"},
    {103, "F11"}, {105, "F13"}, {106, "F16"}, {107, "F14"}, {109, "F10"}, {111, "F12"}, {113, "F15"},
    {115, "Home"}, {116, "PgUp"}, {117, "Del"}, {118, "F4"}, {119, "End"}, {120, "F2"}, {121, "PgDown"},
    {122, "F1"}, {123, "←"}, {124, "→"}, {125, "↓"}, {126, "↑"},
};

TEST(KeyTable, EveryCodeOfTheFormatHasItsNameKeysymAndQtKey)
{
    for (const auto &[code, name] : kFormatKeys) {
        const KeyTableEntry *entry = KeyTable::byCode(code);
        ASSERT_NE(entry, nullptr) << code;
        EXPECT_EQ(Hotkey::keyName(code), name) << code;
        EXPECT_NE(entry->keysym, 0u) << code;
        EXPECT_NE(entry->qtKey, Qt::Key_unknown) << code;
    }
}

TEST(KeyTable, LettersAndDigitsGrabTheirLowerCaseKeysyms)
{
    EXPECT_EQ(KeyTable::byCode(0)->keysym, uint32_t('a'));
    EXPECT_EQ(KeyTable::byCode(4)->keysym, uint32_t('h'));
    EXPECT_EQ(KeyTable::byCode(19)->keysym, uint32_t('2'));
    EXPECT_EQ(KeyTable::byCode(23)->keysym, uint32_t('5'));
    EXPECT_EQ(KeyTable::byCode(22)->keysym, uint32_t('6'));
    EXPECT_EQ(KeyTable::byCode(122)->keysym, 0xffbeu); // F1
    EXPECT_EQ(KeyTable::byCode(90)->keysym, 0xffd1u);  // F20
    EXPECT_EQ(KeyTable::byCode(53)->keysym, 0xff1bu);  // Escape
}

TEST(KeyTable, CodesAndKeysymsAreUnique)
{
    QSet<uint16_t> codes;
    QSet<uint32_t> keysyms;
    for (const KeyTableEntry &entry : KeyTable::entries()) {
        EXPECT_FALSE(codes.contains(entry.code)) << entry.code;
        EXPECT_FALSE(keysyms.contains(entry.keysym)) << entry.code;
        codes.insert(entry.code);
        keysyms.insert(entry.keysym);
    }
}

TEST(KeyTable, ReservedCodesAreAboveTheFormatsRange)
{
    for (const KeyTableEntry &entry : KeyTable::entries()) {
        if (entry.code > 126) {
            EXPECT_GT(entry.code, KeyTable::reservedBase) << entry.code;
        }
    }
    ASSERT_NE(KeyTable::byCode(KeyTable::printCode), nullptr);
    EXPECT_EQ(KeyTable::byCode(KeyTable::printCode)->qtKey, Qt::Key_Print);
}

TEST(KeyTable, KeysymLookupFoldsShiftedLetters)
{
    ASSERT_NE(KeyTable::byKeysym('T'), nullptr);
    EXPECT_EQ(KeyTable::byKeysym('T')->code, 17);
    EXPECT_EQ(KeyTable::byKeysym(0xff61)->code, KeyTable::printCode);
    EXPECT_EQ(KeyTable::byKeysym(0x1234567), nullptr);
}

TEST(KeyTable, QtKeyLookupTellsKeypadFromMainKeys)
{
    EXPECT_EQ(KeyTable::byQtKey(Qt::Key_5, false)->code, 23);
    EXPECT_EQ(KeyTable::byQtKey(Qt::Key_5, true)->code, 0x8015);
    EXPECT_EQ(KeyTable::byQtKey(Qt::Key_Enter, false)->code, 36);
    EXPECT_EQ(KeyTable::byQtKey(Qt::Key_Enter, true)->code, 0x801f);
}

TEST(KeyTable, EveryEntryMapsToItselfThroughQtAndX11)
{
    for (const KeyTableEntry &entry : KeyTable::entries()) {
        EXPECT_EQ(KeyTable::byCode(entry.code), &entry);
        EXPECT_EQ(KeyTable::byKeysym(entry.keysym), &entry) << entry.code;
        EXPECT_EQ(KeyTable::byQtKey(entry.qtKey, entry.keypad), &entry) << entry.code;
    }
}

} // namespace
