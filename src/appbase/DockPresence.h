#pragma once

#include <functional>

// glimpso has no window of its own; its editor, trim and settings windows count
// here while they are open, so the application raises itself with the first one
// and goes back to living in the tray after the last. On this desktop a window
// brings its own taskbar entry, so the count is all that is kept.
class DockPresence
{
public:
    // Called with true when the first counted window opens, and with false
    // once the last has closed and `keeps` does not hold the presence.
    explicit DockPresence(std::function<void(bool present)> apply = {});

    void windowOpened();
    void windowClosed();
    // Re-evaluates after the event loop turns, so the change follows the close.
    void update();

    int openWindows() const { return m_openWindows; }
    bool isPresent() const { return m_present; }

    std::function<bool()> keeps;

private:
    void updateNow();

    std::function<void(bool)> m_apply;
    int m_openWindows = 0;
    bool m_present = false;
};
