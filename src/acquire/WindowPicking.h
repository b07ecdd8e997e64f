#pragma once

#include "acquire/WindowTarget.h"

#include <Qt>

#include <functional>
#include <optional>

// Lets the user click the window to capture or record: a dimming layer on
// every display, the window under the pointer lit and outlined, a click to
// choose, Escape to leave. Implemented with widgets above this layer; the
// flows that need a window (capture, recording) hold this interface.
class WindowPicking
{
public:
    // The chosen window and the modifiers held at the click; nothing and no
    // modifiers when the user left the pick.
    using Completion = std::function<void(const std::optional<WindowTarget> &, Qt::KeyboardModifiers)>;

    virtual ~WindowPicking() = default;
    // Puts the picker up; `completion` is called once, on the main thread.
    // A pick asked for while one is up is refused: completion gets nothing.
    virtual void pick(Completion completion) = 0;
    virtual bool isPicking() const = 0;
    // Ends a pick that is up as if the user had left it.
    virtual void cancel() = 0;
};
