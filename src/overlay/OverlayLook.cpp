#include "overlay/OverlayLook.h"

#include "settings/AppSettings.h"
#include "settings/HexColor.h"

#include <algorithm>


OverlayLook OverlayLook::from(const AppSettings &settings, CaptureIntent intent)
{
    return make(settings.overlayColorHex.value(), settings.overlayOpacity.value(), settings.accentColorHex.value(),
                intent);
}

OverlayLook OverlayLook::make(const QString &overlayColorHex, double overlayOpacity, const QString &accentColorHex,
                              CaptureIntent intent)
{
    OverlayLook look;
    look.dim = HexColor::parse(overlayColorHex).value_or(QColor(Qt::black));
    look.dim.setAlphaF(float(std::clamp(overlayOpacity, 0.0, 1.0)));
    // A light grey that reads on dark and light screens alike.
    look.accent = HexColor::parse(accentColorHex).value_or(QColor::fromRgbF(0.92f, 0.92f, 0.92f));
    look.hint = hintText(intent);
    return look;
}

QString OverlayLook::hintText(CaptureIntent intent)
{
    return intent == CaptureIntent::text ? QStringLiteral("Drag over text to copy it   ·   ESC to cancel")
                                         : QStringLiteral("Drag to select region   ·   ESC to cancel");
}
