#pragma once

#include "acquire/RegionCompositor.h"
#include "acquire/WindowGrabbing.h"

#include <QColor>
#include <QFuture>
#include <QImage>

#include <cstdint>
#include <optional>

// One window by itself, set on a background with padding and a soft shadow.
// Stateless.
namespace WindowCapture {

struct Options {
    std::optional<QColor> background; // absent: transparent
    double padding = 0;               // points
    bool shadow = true;
};

// The text of the failure when the window is gone.
QString closedText();

// The window's picture on its canvas: padding round(padding × scale) on
// every side, the background over all of it, the shadow (a large soft one
// and a small contact one, both below the window) under the window, the
// window on top. The canvas does not grow for the shadow: what falls
// outside it is cut. With no padding, background or shadow, the picture
// itself.
QImage frame(const QImage &window, double scale, const Options &options);

// Grabs the window off the calling thread and frames it. Fails with the
// grabber's AppError.
QFuture<RegionCompositor::Composed> capture(WindowGrabbing &grabber, std::uint32_t windowID, const Options &options,
                                            bool justUncovered = false);

} // namespace WindowCapture
