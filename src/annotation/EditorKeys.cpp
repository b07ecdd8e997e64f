#include "annotation/EditorKeys.h"

namespace glimpso::EditorKeys {

bool isDelete(const Hotkey &key)
{
    return key.keyCode == backspace || key.keyCode == forwardDelete;
}

bool isReturn(const Hotkey &key)
{
    return key.keyCode == returnKey || key.keyCode == keypadEnter;
}

std::optional<EditorShortcut> match(const EditorShortcutMap &bindings, const Hotkey &key)
{
    for (EditorShortcut shortcut : EditorShortcuts::allCases) {
        const auto found = bindings.find(shortcut);
        const Hotkey binding = found != bindings.end() ? found->second : EditorShortcuts::defaultHotkey(shortcut);
        if (!binding.isAssigned())
            continue;
        if (binding.keyCode == key.keyCode
            && (binding.modifierFlagsRaw & matchedModifierMask) == (key.modifierFlagsRaw & matchedModifierMask))
            return shortcut;
    }
    return std::nullopt;
}

bool isBare(const Hotkey &binding)
{
    return (binding.modifierFlagsRaw & matchedModifierMask) == 0;
}

} // namespace glimpso::EditorKeys
