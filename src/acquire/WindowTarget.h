#pragma once

#include <QRectF>
#include <QString>

#include <cstdint>

// A window that can be captured: its id, its program's name and its frame
// (decorations included) in global points, y up. A plain value.
struct WindowTarget {
    std::uint32_t windowID = 0;
    QString appName; // empty when the window list gives none
    QRectF frame;
    bool operator==(const WindowTarget &) const = default;
};
