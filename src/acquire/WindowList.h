#pragma once

#include "acquire/WindowTarget.h"

#include <QList>

#include <cstdint>
#include <optional>

// The desktop's windows as the window manager stacks them, for the window
// picker and window capture. Implemented by the platform; the rules of which
// windows are targets are WindowTargets'.
class WindowList
{
public:
    // What the platform knows of one top-level window.
    struct Entry {
        std::optional<std::uint32_t> windowID;
        std::optional<qint64> processID; // absent when the window doesn't say
        QString appName;
        std::optional<QRectF> frame;      // global points, decorations included
        bool isNormalLayer = true;        // not a dock, desktop, menu, notice or tooltip
        std::optional<double> opacity;    // 0 to 1, when the window sets one
    };

    virtual ~WindowList() = default;
    // On-screen windows of the current workspace, front to back; empty when
    // the desktop gives no window list.
    virtual QList<Entry> onScreenEntries() = 0;
};
