#pragma once

#include <QColor>
#include <QString>

// How a floating toolbar looks, worked out from the four chrome settings and
// the desktop's appearance: translucent ("glass") or a solid colour at the
// chosen opacity, the icon colour, and the corner radius.
struct ToolbarChrome {
    bool glass = true;
    // The solid fill, or the tint the glass lays over what lies beneath.
    QColor background;
    QColor iconColor;
    qreal cornerRadius = 10;

    static ToolbarChrome resolve(const QString &backgroundHex, const QString &iconHex, double opacity,
                                 double cornerRadius, bool darkAppearance);

    // The desktop's text colour for the appearance, the icon colour when the
    // setting does not name one.
    static QColor labelColor(bool darkAppearance);
    // Whether the desktop shows its dark appearance.
    static bool darkAppearance();
};
