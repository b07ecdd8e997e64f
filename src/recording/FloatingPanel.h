#pragma once

#include <QRect>
#include <QRectF>
#include <QString>

class QWidget;

// The windows a recording puts on the screen beside what it records (the
// border, the countdown, the control bar, click rings, the picker): borderless,
// above everything, never taking the keyboard focus from the program being
// recorded, and left alone by the window manager (override-redirect on X11),
// so that they appear on every workspace and in no task list.
namespace FloatingPanel {

struct Options {
    // Clicks pass through to what is under the window.
    bool clickThrough = false;
    // Drawn with an alpha channel; only where a compositing manager blends
    // windows. Elsewhere the window is opaque and cut to its shape.
    bool translucent = false;
};

void prepare(QWidget *window, const QString &title, Options options);

// A rectangle of global points (y up) as Qt's desktop geometry.
QRect qtGeometry(const QRectF &global);
// And back.
QRectF globalRect(const QRect &qt);

} // namespace FloatingPanel
