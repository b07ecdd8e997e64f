#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QKeySequence>
#include <QString>

#include <cstdint>
#include <optional>

// A keyboard shortcut as the settings store it: a key code of the settings
// format and its modifier bits. Its JSON form {"keyCode":19,"modifierFlagsRaw":1179648}
// is part of the settings file's format.
//
// Modifier bits and what they are on this desktop:
//   0x20000 Shift, 0x40000 Control (the Super key here), 0x80000 Option (Alt),
//   0x100000 Command (Ctrl here). So the default region shortcut reads Ctrl+Shift+2.
struct Hotkey {
    static constexpr uint16_t unassignedCode = 65535;
    static constexpr uint64_t shiftFlag = 0x20000;
    static constexpr uint64_t controlFlag = 0x40000; // Super
    static constexpr uint64_t optionFlag = 0x80000;  // Alt
    static constexpr uint64_t commandFlag = 0x100000; // Ctrl
    static constexpr uint64_t deviceIndependentMask = ~uint64_t(0x1ffff);

    uint16_t keyCode = unassignedCode;
    uint64_t modifierFlagsRaw = 0;

    static Hotkey unassigned() { return {}; }
    bool isAssigned() const { return keyCode != unassignedCode; }

    // "Ctrl+Alt+Shift+Super+2", or "—" when unassigned.
    QString displayString() const;
    // The key's own name: "A", "2", "F5", "Enter", "key(110)" for a code without one.
    static QString keyName(uint16_t keyCode);
    // What a menu item shows as its shortcut; none for punctuation, arrows and
    // every code above 122.
    std::optional<QKeySequence> menuKeyEquivalent() const;

    // The same combination as Qt spells it, for matching key events and for
    // QKeySequence-based UI; empty when unassigned or the code is unknown.
    QKeySequence keySequence() const;
    // The shortcut of a Qt key press, if the key is in the table.
    // Shift+2 arriving as "@" still reads as Shift and the "2" key.
    static std::optional<Hotkey> fromKeyEvent(int qtKey, Qt::KeyboardModifiers modifiers);
    // A known key code with the modifier bits of Qt's modifiers.
    static Hotkey withModifiers(uint16_t keyCode, Qt::KeyboardModifiers modifiers);

    QJsonObject toJson() const;
    QByteArray toJsonText() const;
    static std::optional<Hotkey> fromJson(const QJsonValue &value);
    static std::optional<Hotkey> fromJsonText(const QByteArray &text);

    friend bool operator==(const Hotkey &, const Hotkey &) = default;
};
