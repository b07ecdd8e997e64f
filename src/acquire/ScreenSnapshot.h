#pragma once

#include <QImage>
#include <QRectF>

#include <cstdint>

// The frozen picture of one display with its place and scale. Built once per
// capture and shared, unchanged, by the coordinator, the overlay and the
// compositor.
struct ScreenSnapshot {
    // The display's identifier for this session (see DesktopSpace::displayID).
    std::uint32_t displayID = 0;
    // The picture in pixels, origin top left. Its size need not be exactly
    // frame × scale; everything that reads it clamps to its real size.
    QImage image;
    // The display's frame in global points: origin at the bottom left of the
    // primary display, y up.
    QRectF frame;
    // Pixels per point.
    double scale = 1.0;
};
