#pragma once

#include "appbase/CaptureIntent.h"

#include <QColor>
#include <QString>

class AppSettings;

// The overlay's colours and texts, read from the settings once per capture.
struct OverlayLook {
    QColor dim;    // the veil over everything outside the selection
    QColor accent; // the selection's outline and handles
    QString hint;

    static OverlayLook from(const AppSettings &settings, CaptureIntent intent);
    static OverlayLook make(const QString &overlayColorHex, double overlayOpacity, const QString &accentColorHex,
                            CaptureIntent intent);
    static QString hintText(CaptureIntent intent);
};
