#pragma once

#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

// The command line's capture verbs, which need no overlay:
//   glimpso region --rect WxH+X+Y [--copy | --save]
//   glimpso all [--copy | --save]
// The rectangle is in Qt's desktop pixels, y down, in X11's geometry form.
struct CaptureVerb {
    enum class Output { copy, save };

    bool allDisplays = false;
    std::optional<QRect> rect;
    Output output = Output::copy;

    // The verb and its arguments; absent with `error` set when they make no sense.
    static std::optional<CaptureVerb> parse(const QStringList &arguments, QString *error);
    // "1920x1080+0+0", "200x100-10+20": absent when the text is not one.
    static std::optional<QRect> parseGeometry(const QString &text);
};
