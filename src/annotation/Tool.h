#pragma once

#include <QString>

#include <array>
#include <optional>

namespace glimpso {

// The drawing tools, in toolbar order. The stored text of each case is its
// name as written here ("none", "move", ...); keep them when renaming.
enum class Tool {
    none,
    move,
    pencil,
    highlight,
    line,
    arrow,
    rect,
    ellipse,
    text,
    sequence,
    mosaic,
};

// Every tool in declaration order, for walking them all.
inline constexpr std::array<Tool, 11> allTools{
    Tool::none, Tool::move,    Tool::pencil, Tool::highlight, Tool::line,     Tool::arrow,
    Tool::rect, Tool::ellipse, Tool::text,   Tool::sequence,  Tool::mosaic,
};

QString toString(Tool tool);
std::optional<Tool> toolFromString(const QString &name);

} // namespace glimpso
