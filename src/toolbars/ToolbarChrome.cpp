#include "toolbars/ToolbarChrome.h"

#include "appui/Theme.h"
#include "settings/HexColor.h"


#include <algorithm>

namespace {

constexpr auto glassWord = "glass";
// The glass stands in for a frosted material: the appearance's window tone,
// mostly opaque so the icons read over any capture.
constexpr double glassAlpha = 0.78;

bool isLight(const QColor &colour)
{
    const double luma = 0.299 * colour.redF() + 0.587 * colour.greenF() + 0.114 * colour.blueF();
    return luma > 0.55;
}

} // namespace

QColor ToolbarChrome::labelColor(bool darkAppearance)
{
    return darkAppearance ? QColor(255, 255, 255, 217) : QColor(0, 0, 0, 217);
}

bool ToolbarChrome::darkAppearance()
{
    return Theme::isDark();
}

ToolbarChrome ToolbarChrome::resolve(const QString &backgroundHex, const QString &iconHex, double opacity,
                                     double cornerRadius, bool darkAppearance)
{
    ToolbarChrome chrome;
    chrome.cornerRadius = std::max(0.0, cornerRadius);
    chrome.glass = backgroundHex.trimmed().compare(QLatin1String(glassWord), Qt::CaseInsensitive) == 0;
    if (chrome.glass) {
        chrome.background = darkAppearance ? QColor(30, 30, 32) : QColor(246, 246, 248);
        chrome.background.setAlphaF(float(glassAlpha));
    } else {
        chrome.background = HexColor::parse(backgroundHex).value_or(QColor::fromRgbF(0.12f, 0.12f, 0.12f));
        chrome.background.setAlphaF(float(std::clamp(opacity, 0.0, 1.0)));
    }
    if (const auto named = HexColor::parse(iconHex)) {
        chrome.iconColor = *named;
    } else {
        // "auto" and anything unreadable: the label colour that stands out on
        // this background (glass takes the appearance's own).
        const bool darkBackground = chrome.glass ? darkAppearance : !isLight(chrome.background);
        chrome.iconColor = labelColor(darkBackground);
    }
    return chrome;
}
