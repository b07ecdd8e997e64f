#include "settings/EditorShortcutLookup.h"

namespace EditorShortcutLookup {

Hotkey shortcutFor(const EditorShortcutMap &map, EditorShortcut shortcut)
{
    const auto it = map.find(shortcut);
    return it != map.end() ? it->second : EditorShortcuts::defaultHotkey(shortcut);
}

QString toolTip(const QString &label, const EditorShortcutMap &map, EditorShortcut shortcut)
{
    const Hotkey hotkey = shortcutFor(map, shortcut);
    if (!hotkey.isAssigned())
        return label;
    return QStringLiteral("%1 (%2)").arg(label, hotkey.displayString());
}

std::optional<EditorShortcut> matching(const EditorShortcutMap &map, const Hotkey &pressed)
{
    if (!pressed.isAssigned())
        return std::nullopt;
    for (EditorShortcut shortcut : EditorShortcuts::allCases) {
        if (shortcutFor(map, shortcut) == pressed)
            return shortcut;
    }
    return std::nullopt;
}

} // namespace EditorShortcutLookup
