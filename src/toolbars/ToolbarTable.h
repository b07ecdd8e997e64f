#pragma once

#include "annotation/EditorAction.h"
#include "annotation/Tool.h"
#include "appui/Lucide.h"
#include "settings/EditorShortcut.h"

#include <QString>

#include <array>
#include <optional>

class AppSettings;

// What both capture toolbars show, in their order: the tool chips and the
// action chips, each with its icon, its tooltip and what it asks for.
namespace ToolbarTable {

struct ToolChip {
    glimpso::Tool tool;
    Lucide::Icon icon;
    const char *label;
    // The editor shortcut named in the tooltip, if any.
    std::optional<EditorShortcut> shortcut;
};

inline constexpr std::array<ToolChip, 10> tools{{
    {glimpso::Tool::move, Lucide::mousePointer, "Move / select", std::nullopt},
    {glimpso::Tool::pencil, Lucide::pencil, "Pencil", std::nullopt},
    {glimpso::Tool::highlight, Lucide::highlighter, "Highlighter", std::nullopt},
    {glimpso::Tool::line, Lucide::line, "Line", std::nullopt},
    {glimpso::Tool::arrow, Lucide::arrowUpRight, "Arrow", std::nullopt},
    {glimpso::Tool::rect, Lucide::square, "Rectangle", std::nullopt},
    {glimpso::Tool::ellipse, Lucide::circle, "Ellipse", std::nullopt},
    {glimpso::Tool::text, Lucide::type, "Text", EditorShortcut::text},
    {glimpso::Tool::sequence, Lucide::counter, "Counter", std::nullopt},
    {glimpso::Tool::mosaic, Lucide::mosaic, "Mosaic / redact", std::nullopt},
}};

enum class ActionChip { undo, redo, copy, copyText, save, upload, cancel };

struct ActionChipEntry {
    ActionChip chip;
    Lucide::Icon icon;
    const char *label;
    EditorAction::Kind action;
};

inline constexpr std::array<ActionChipEntry, 7> actions{{
    {ActionChip::undo, Lucide::undo, "Undo", EditorAction::Kind::undo},
    {ActionChip::redo, Lucide::redo, "Redo", EditorAction::Kind::redo},
    {ActionChip::copy, Lucide::copy, "Copy", EditorAction::Kind::copy},
    {ActionChip::copyText, Lucide::scanText, "Copy Text", EditorAction::Kind::copyText},
    {ActionChip::save, Lucide::save, "Save", EditorAction::Kind::save},
    {ActionChip::upload, Lucide::cloudUpload, "Upload", EditorAction::Kind::upload},
    {ActionChip::cancel, Lucide::x, "Cancel", EditorAction::Kind::close},
}};

const ActionChipEntry &entry(ActionChip chip);

// "Text (T)" with the shortcut of the settings (or its default); the bare
// label for tools without one.
QString toolTip(const ToolChip &tool, const AppSettings &settings);
// "Copy (Ctrl+C)"; copy text names the global capture-text shortcut, cancel
// names esc.
QString toolTip(const ActionChipEntry &action, const AppSettings &settings);

// The action a payload-free chip sends.
EditorAction action(EditorAction::Kind kind);

// A click on a tool chip: the selected tool's chip puts the tool down.
glimpso::Tool toolAfterClick(glimpso::Tool selected, glimpso::Tool clicked);

} // namespace ToolbarTable
