#pragma once

#include "appbase/CaptureIntent.h"

#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

// The command line's capture verbs:
//   glimpso region                                   the overlay on the display under the pointer
//   glimpso region --rect WxH+X+Y [--copy | --save]  those pixels, no overlay
//   glimpso all                                      the overlay on every display
//   glimpso all --copy | --save                      every display whole, no overlay
//   glimpso text                                     the overlay, reading the text of the area
//   glimpso text --rect WxH+X+Y                      the text of those pixels, no overlay
// The rectangle is in Qt's desktop pixels, y down, in X11's geometry form.
struct CaptureVerb {
    enum class Output { copy, save };

    bool allDisplays = false;
    // The user selects on the frozen screen; otherwise the verb runs unattended.
    bool interactive = false;
    CaptureIntent intent = CaptureIntent::image;
    std::optional<QRect> rect;
    Output output = Output::copy;

    // The verb and its arguments; absent with `error` set when they make no sense.
    static std::optional<CaptureVerb> parse(const QStringList &arguments, QString *error);
    // "1920x1080+0+0", "200x100-10+20": absent when the text is not one.
    static std::optional<QRect> parseGeometry(const QString &text);
};
