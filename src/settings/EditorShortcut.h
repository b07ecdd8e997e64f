#pragma once

#include "settings/Hotkey.h"

#include <QString>

#include <array>
#include <map>
#include <optional>

// The shortcuts that act while the capture overlay or the editor is open.
// Persisted: the raw text of each case ("copy", "save", ...) is its key in the
// settings file's "settings.hotkey.editor" object.
enum class EditorShortcut { copy, save, upload, undo, redo, text };

using EditorShortcutMap = std::map<EditorShortcut, Hotkey>;

namespace EditorShortcuts {

inline constexpr std::array allCases = {EditorShortcut::copy, EditorShortcut::save, EditorShortcut::upload,
                                        EditorShortcut::undo, EditorShortcut::redo, EditorShortcut::text};

QString rawText(EditorShortcut shortcut);
std::optional<EditorShortcut> fromRawText(const QString &text);
Hotkey defaultHotkey(EditorShortcut shortcut);
EditorShortcutMap defaults();

// The stored JSON object, text key to hotkey; entries under unknown keys are
// dropped, missing ones take their defaults, corrupt data reads as all defaults.
EditorShortcutMap decode(const QByteArray &json);
QByteArray encode(const EditorShortcutMap &map);

} // namespace EditorShortcuts
