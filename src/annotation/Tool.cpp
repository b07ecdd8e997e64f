#include "annotation/Tool.h"

namespace glimpso {

QString toString(Tool tool)
{
    switch (tool) {
    case Tool::none: return QStringLiteral("none");
    case Tool::move: return QStringLiteral("move");
    case Tool::pencil: return QStringLiteral("pencil");
    case Tool::highlight: return QStringLiteral("highlight");
    case Tool::line: return QStringLiteral("line");
    case Tool::arrow: return QStringLiteral("arrow");
    case Tool::rect: return QStringLiteral("rect");
    case Tool::ellipse: return QStringLiteral("ellipse");
    case Tool::text: return QStringLiteral("text");
    case Tool::sequence: return QStringLiteral("sequence");
    case Tool::mosaic: return QStringLiteral("mosaic");
    }
    return {};
}

std::optional<Tool> toolFromString(const QString &name)
{
    for (Tool tool : allTools) {
        if (toString(tool) == name)
            return tool;
    }
    return std::nullopt;
}

} // namespace glimpso
