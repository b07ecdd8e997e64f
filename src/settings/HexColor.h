#pragma once

#include <QColor>
#include <QString>

#include <optional>

// Colours in the settings are six hex digits behind a number sign ("#FF3B30").
namespace HexColor {

// The colour of "#RRGGBB" (either case, blanks around ignored); absent for
// anything else, so that each reader picks its own fallback.
std::optional<QColor> parse(const QString &text);
// "#RRGGBB" in upper case.
QString format(const QColor &colour);

} // namespace HexColor
