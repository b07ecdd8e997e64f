#pragma once

#include "settings/EditorShortcut.h"

#include <QString>
#include <optional>

// How the overlay, the editor and their toolbars read the editor shortcuts:
// always from the settings' map, never from a constant, so that a change in
// the settings shows in the next tooltip and acts on the next key press.
namespace EditorShortcutLookup {

// The map's shortcut, or its default where the map has none.
Hotkey shortcutFor(const EditorShortcutMap &map, EditorShortcut shortcut);
// "Copy (Ctrl+C)"; the bare label when the shortcut is unassigned.
QString toolTip(const QString &label, const EditorShortcutMap &map, EditorShortcut shortcut);
// The shortcut a key press asks for, first in case order; none for an
// unassigned press or one that matches nothing.
std::optional<EditorShortcut> matching(const EditorShortcutMap &map, const Hotkey &pressed);

} // namespace EditorShortcutLookup
