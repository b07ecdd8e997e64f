#pragma once

#include "settings/EditorShortcut.h"
#include "settings/Hotkey.h"

#include <cstdint>
#include <optional>

namespace glimpso::EditorKeys {

// The fixed keys of the editor, as codes of the settings' key table.
inline constexpr uint16_t returnKey = 36;
inline constexpr uint16_t backspace = 51;
inline constexpr uint16_t escape = 53;
inline constexpr uint16_t forwardDelete = 117;
inline constexpr uint16_t keypadEnter = 0x801f;

// Only these bits of the modifier flags take part in matching, so Caps Lock
// (and any lower, device-dependent bit) never matters.
inline constexpr uint64_t matchedModifierMask = 0xfffe0000;

bool isDelete(const Hotkey &key);
// Return, or Enter on the keypad: both confirm.
bool isReturn(const Hotkey &key);

// The first editor shortcut, in the order copy, save, upload, undo, redo,
// text, whose binding is `key`; unset bindings are skipped.
std::optional<EditorShortcut> match(const EditorShortcutMap &bindings, const Hotkey &key);

// A binding without modifiers (the bare T of the text tool) that a text field
// must receive as typing.
bool isBare(const Hotkey &binding);

} // namespace glimpso::EditorKeys
