#pragma once

#include <QString>
#include <Qt>

#include <cstdint>
#include <optional>
#include <span>

// The one table that says what each stored key code means on this desktop.
//
// Stored shortcuts keep the virtual key codes of the settings format (the "2"
// key is 19, "H" is 4, ...), so that defaults and settings files read the same
// everywhere. Keys the format has no code for (Print, Pause, Menu, keypad keys)
// take codes from the reserved range above 0x8000.
struct KeyTableEntry {
    uint16_t code;
    const char *name;         // shown in menus, tooltips and the recorder ("A", "F5", "Enter")
    uint32_t keysym;          // X11 keysym to grab
    Qt::Key qtKey;            // Qt key of a QKeyEvent
    bool keypad = false;      // Qt reports keypad keys with Qt::KeypadModifier
    bool menuEquivalent = false; // a menu may show it as its shortcut
};

namespace KeyTable {

inline constexpr uint16_t reservedBase = 0x8000;
inline constexpr uint16_t printCode = 0x8001;

std::span<const KeyTableEntry> entries();
const KeyTableEntry *byCode(uint16_t code);
const KeyTableEntry *byQtKey(Qt::Key key, bool keypad);
const KeyTableEntry *byKeysym(uint32_t keysym);

} // namespace KeyTable
