#include "settings/HexColor.h"

namespace HexColor {

std::optional<QColor> parse(const QString &text)
{
    const QString hex = text.trimmed();
    if (hex.size() != 7 || !hex.startsWith(u'#'))
        return std::nullopt;
    bool ok = false;
    const uint value = hex.mid(1).toUInt(&ok, 16);
    if (!ok || hex.mid(1).contains(u'+') || hex.mid(1).contains(u'-'))
        return std::nullopt;
    return QColor::fromRgb(QRgb(0xff000000u | value));
}

QString format(const QColor &colour)
{
    return colour.name(QColor::HexRgb).toUpper();
}

} // namespace HexColor
