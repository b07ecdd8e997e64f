#include "annotation/TextOptions.h"

namespace glimpso {

QString toString(TextStyle style)
{
    switch (style) {
    case TextStyle::plain: return QStringLiteral("plain");
    case TextStyle::outline: return QStringLiteral("outline");
    case TextStyle::background: return QStringLiteral("background");
    }
    return {};
}

std::optional<TextStyle> textStyleFromString(const QString &name)
{
    for (TextStyle style : {TextStyle::plain, TextStyle::outline, TextStyle::background}) {
        if (toString(style) == name)
            return style;
    }
    return std::nullopt;
}

} // namespace glimpso
