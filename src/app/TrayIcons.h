#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>

// The tray's two icons, drawn in code on an 18-unit square so that they are
// sharp at every size a panel asks for: the marquee (a dashed square with a
// handle on each corner) while glimpso waits, and the recording icon (a ring
// around a red dot) while it records, when a click stops the recording.
namespace TrayIcons {

// The sizes put into each icon, in pixels.
inline constexpr int sizes[] = {16, 22, 24, 32};

QImage marquee(int pixels, const QColor &ink);
QImage recording(int pixels, const QColor &ink);

// Light ink on a dark panel, dark ink on a light one.
QIcon marqueeIcon(bool darkPanel);
QIcon recordingIcon(bool darkPanel);

// Whether the desktop's panels are dark, as far as the palette tells.
bool desktopIsDark();

} // namespace TrayIcons
