#pragma once

#include <QString>

#include <cstdint>
#include <optional>

// The window that had the focus before glimpso took it, and how to hand it
// back.
class FocusKeeper
{
public:
    struct Window {
        std::uint32_t id = 0;
        QString name; // the program's class name, for logs
        bool operator==(const Window &) const = default;
    };

    virtual ~FocusKeeper() = default;
    // The active window, unless it is one of glimpso's own.
    virtual std::optional<Window> activeForeignWindow() = 0;
    // Asks the window manager to activate it; false when it is gone.
    virtual bool activate(const Window &window) = 0;
};
