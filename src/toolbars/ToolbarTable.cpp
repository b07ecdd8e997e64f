#include "toolbars/ToolbarTable.h"

#include "settings/AppSettings.h"
#include "settings/EditorShortcutLookup.h"

#include <QCoreApplication>

namespace ToolbarTable {

namespace {

QString translated(const char *label)
{
    return QCoreApplication::translate("ToolbarTable", label);
}

QString withShortcut(const QString &label, const QString &shortcut)
{
    return shortcut.isEmpty() ? label : QStringLiteral("%1 (%2)").arg(label, shortcut);
}

std::optional<EditorShortcut> editorShortcut(ActionChip chip)
{
    switch (chip) {
    case ActionChip::undo: return EditorShortcut::undo;
    case ActionChip::redo: return EditorShortcut::redo;
    case ActionChip::copy: return EditorShortcut::copy;
    case ActionChip::save: return EditorShortcut::save;
    case ActionChip::upload: return EditorShortcut::upload;
    case ActionChip::copyText:
    case ActionChip::cancel: return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

const ActionChipEntry &entry(ActionChip chip)
{
    for (const ActionChipEntry &candidate : actions) {
        if (candidate.chip == chip)
            return candidate;
    }
    return actions.front();
}

QString toolTip(const ToolChip &tool, const AppSettings &settings)
{
    const QString label = translated(tool.label);
    if (!tool.shortcut)
        return label;
    return EditorShortcutLookup::toolTip(label, settings.editorShortcuts(), *tool.shortcut);
}

QString toolTip(const ActionChipEntry &action, const AppSettings &settings)
{
    const QString label = translated(action.label);
    if (action.chip == ActionChip::cancel)
        return withShortcut(label, QStringLiteral("esc"));
    if (action.chip == ActionChip::copyText) {
        const Hotkey &hotkey = settings.hotkeyText();
        return withShortcut(label, hotkey.isAssigned() ? hotkey.displayString() : QString());
    }
    return EditorShortcutLookup::toolTip(label, settings.editorShortcuts(), *editorShortcut(action.chip));
}

EditorAction action(EditorAction::Kind kind)
{
    switch (kind) {
    case EditorAction::Kind::undo: return EditorAction::undo();
    case EditorAction::Kind::redo: return EditorAction::redo();
    case EditorAction::Kind::copy: return EditorAction::copy();
    case EditorAction::Kind::save: return EditorAction::save();
    case EditorAction::Kind::upload: return EditorAction::upload();
    case EditorAction::Kind::copyText: return EditorAction::copyText();
    default: return EditorAction::close();
    }
}

glimpso::Tool toolAfterClick(glimpso::Tool selected, glimpso::Tool clicked)
{
    return selected == clicked ? glimpso::Tool::none : clicked;
}

} // namespace ToolbarTable
