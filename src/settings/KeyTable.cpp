#include "settings/KeyTable.h"

#include <algorithm>
#include <array>

namespace {

// X11 keysyms are plain numbers (X11/keysymdef.h); they are written out here so
// that this table needs no X headers and the settings need no display.
constexpr uint32_t ks(char c) { return static_cast<unsigned char>(c); }
constexpr uint32_t XK_Return = 0xff0d, XK_Tab = 0xff09, XK_BackSpace = 0xff08, XK_Escape = 0xff1b,
                   XK_Home = 0xff50, XK_Left = 0xff51, XK_Up = 0xff52, XK_Right = 0xff53, XK_Down = 0xff54,
                   XK_Page_Up = 0xff55, XK_Page_Down = 0xff56, XK_End = 0xff57, XK_Delete = 0xffff,
                   XK_Print = 0xff61, XK_Pause = 0xff13, XK_Scroll_Lock = 0xff14, XK_Insert = 0xff63,
                   XK_Menu = 0xff67, XK_KP_Enter = 0xff8d, XK_KP_Multiply = 0xffaa, XK_KP_Add = 0xffab,
                   XK_KP_Subtract = 0xffad, XK_KP_Decimal = 0xffae, XK_KP_Divide = 0xffaf, XK_KP_0 = 0xffb0;
constexpr uint32_t xkF(int n) { return 0xffbe + uint32_t(n - 1); }
constexpr Qt::Key qtF(int n) { return Qt::Key(Qt::Key_F1 + (n - 1)); }
constexpr Qt::Key qtDigit(int n) { return Qt::Key(Qt::Key_0 + n); }

constexpr KeyTableEntry letter(uint16_t code, char upper)
{
    return {code, nullptr, ks(char(upper - 'A' + 'a')), Qt::Key(Qt::Key_A + (upper - 'A')), false, true};
}
constexpr KeyTableEntry digit(uint16_t code, int n)
{
    return {code, nullptr, ks(char('0' + n)), qtDigit(n), false, true};
}
constexpr KeyTableEntry fkey(uint16_t code, int n) { return {code, nullptr, xkF(n), qtF(n), false, true}; }

// Letter, digit and function-key names are derived from the Qt key in keyName;
// the others are spelled out here.
constexpr std::array kEntries = {
    letter(0, 'A'), letter(1, 'S'), letter(2, 'D'), letter(3, 'F'), letter(4, 'H'), letter(5, 'G'),
    letter(6, 'Z'), letter(7, 'X'), letter(8, 'C'), letter(9, 'V'), letter(11, 'B'), letter(12, 'Q'),
    letter(13, 'W'), letter(14, 'E'), letter(15, 'R'), letter(16, 'Y'), letter(17, 'T'),
    digit(18, 1), digit(19, 2), digit(20, 3), digit(21, 4), digit(22, 6), digit(23, 5),
    KeyTableEntry{24, "=", ks('='), Qt::Key_Equal}, digit(25, 9), digit(26, 7),
    KeyTableEntry{27, "-", ks('-'), Qt::Key_Minus}, digit(28, 8), digit(29, 0),
    KeyTableEntry{30, "]", ks(']'), Qt::Key_BracketRight},
    letter(31, 'O'), letter(32, 'U'), KeyTableEntry{33, "[", ks('['), Qt::Key_BracketLeft},
    letter(34, 'I'), letter(35, 'P'),
    KeyTableEntry{36, "Enter", XK_Return, Qt::Key_Return, false, true},
    letter(37, 'L'), letter(38, 'J'), KeyTableEntry{39, "'", ks('\''), Qt::Key_Apostrophe},
    letter(40, 'K'), KeyTableEntry{41, ";", ks(';'), Qt::Key_Semicolon},
    KeyTableEntry{42, "\\", ks('\\'), Qt::Key_Backslash}, KeyTableEntry{43, ",", ks(','), Qt::Key_Comma},
    KeyTableEntry{44, "/", ks('/'), Qt::Key_Slash}, letter(45, 'N'), letter(46, 'M'),
    KeyTableEntry{47, ".", ks('.'), Qt::Key_Period},
    KeyTableEntry{48, "Tab", XK_Tab, Qt::Key_Tab, false, true},
    KeyTableEntry{49, "Space", ks(' '), Qt::Key_Space, false, true},
    KeyTableEntry{50, "`", ks('`'), Qt::Key_QuoteLeft},
    KeyTableEntry{51, "Backspace", XK_BackSpace, Qt::Key_Backspace},
    KeyTableEntry{53, "Esc", XK_Escape, Qt::Key_Escape},
    fkey(64, 17), fkey(79, 18), fkey(80, 19), fkey(90, 20),
    fkey(96, 5), fkey(97, 6), fkey(98, 7), fkey(99, 3), fkey(100, 8), fkey(101, 9),
    fkey(103, 11), fkey(105, 13), fkey(106, 16), fkey(107, 14), fkey(109, 10), fkey(111, 12), fkey(113, 15),
    KeyTableEntry{115, "Home", XK_Home, Qt::Key_Home},
    KeyTableEntry{116, "PgUp", XK_Page_Up, Qt::Key_PageUp},
    KeyTableEntry{117, "Del", XK_Delete, Qt::Key_Delete},
    fkey(118, 4),
    KeyTableEntry{119, "End", XK_End, Qt::Key_End},
    fkey(120, 2),
    KeyTableEntry{121, "PgDown", XK_Page_Down, Qt::Key_PageDown},
    fkey(122, 1),
    KeyTableEntry{123, "←", XK_Left, Qt::Key_Left}, KeyTableEntry{124, "→", XK_Right, Qt::Key_Right},
    KeyTableEntry{125, "↓", XK_Down, Qt::Key_Down}, KeyTableEntry{126, "↑", XK_Up, Qt::Key_Up},
    // Keys without a code in the settings format.
    KeyTableEntry{0x8001, "Print", XK_Print, Qt::Key_Print},
    KeyTableEntry{0x8002, "Pause", XK_Pause, Qt::Key_Pause},
    KeyTableEntry{0x8003, "Menu", XK_Menu, Qt::Key_Menu},
    KeyTableEntry{0x8004, "Insert", XK_Insert, Qt::Key_Insert},
    KeyTableEntry{0x8005, "ScrollLock", XK_Scroll_Lock, Qt::Key_ScrollLock},
    KeyTableEntry{0x8010, "Num 0", XK_KP_0 + 0, Qt::Key_0, true},
    KeyTableEntry{0x8011, "Num 1", XK_KP_0 + 1, Qt::Key_1, true},
    KeyTableEntry{0x8012, "Num 2", XK_KP_0 + 2, Qt::Key_2, true},
    KeyTableEntry{0x8013, "Num 3", XK_KP_0 + 3, Qt::Key_3, true},
    KeyTableEntry{0x8014, "Num 4", XK_KP_0 + 4, Qt::Key_4, true},
    KeyTableEntry{0x8015, "Num 5", XK_KP_0 + 5, Qt::Key_5, true},
    KeyTableEntry{0x8016, "Num 6", XK_KP_0 + 6, Qt::Key_6, true},
    KeyTableEntry{0x8017, "Num 7", XK_KP_0 + 7, Qt::Key_7, true},
    KeyTableEntry{0x8018, "Num 8", XK_KP_0 + 8, Qt::Key_8, true},
    KeyTableEntry{0x8019, "Num 9", XK_KP_0 + 9, Qt::Key_9, true},
    KeyTableEntry{0x801a, "Num +", XK_KP_Add, Qt::Key_Plus, true},
    KeyTableEntry{0x801b, "Num -", XK_KP_Subtract, Qt::Key_Minus, true},
    KeyTableEntry{0x801c, "Num *", XK_KP_Multiply, Qt::Key_Asterisk, true},
    KeyTableEntry{0x801d, "Num /", XK_KP_Divide, Qt::Key_Slash, true},
    KeyTableEntry{0x801e, "Num .", XK_KP_Decimal, Qt::Key_Period, true},
    KeyTableEntry{0x801f, "Num Enter", XK_KP_Enter, Qt::Key_Enter, true},
};

template <typename Pred>
const KeyTableEntry *findEntry(Pred pred)
{
    auto it = std::find_if(kEntries.begin(), kEntries.end(), pred);
    return it == kEntries.end() ? nullptr : &*it;
}

} // namespace

namespace KeyTable {

std::span<const KeyTableEntry> entries() { return kEntries; }

const KeyTableEntry *byCode(uint16_t code)
{
    return findEntry([code](const KeyTableEntry &e) { return e.code == code; });
}

const KeyTableEntry *byQtKey(Qt::Key key, bool keypad)
{
    // Qt gives Key_Enter for the main Enter key on some keyboards; treat it as Return.
    if (key == Qt::Key_Enter && !keypad)
        key = Qt::Key_Return;
    return findEntry([=](const KeyTableEntry &e) { return e.qtKey == key && e.keypad == keypad; });
}

const KeyTableEntry *byKeysym(uint32_t keysym)
{
    // Letters arrive as upper-case keysyms when Shift is held.
    if (keysym >= 'A' && keysym <= 'Z')
        keysym += 'a' - 'A';
    return findEntry([keysym](const KeyTableEntry &e) { return e.keysym == keysym; });
}

} // namespace KeyTable
