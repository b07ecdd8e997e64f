#pragma once

#include <QPoint>
#include <Qt>

namespace glimpso {

// One scroll event as the editor reads it: how far, whether the device is a
// notched wheel or gives fine-grained travel, and where in a gesture it falls.
struct ScrollInput {
    enum class Phase {
        none,     // a wheel without gestures
        began,    // fingers went down on a touchpad
        changed,
        ended,
        momentum, // coasting after the fingers left: inertia, ignored
    };

    // Vertical travel, positive away from the user (wheel up, fingers up). For a
    // notched wheel only the sign counts; precise input is in points.
    double deltaY = 0;
    // Fine-grained travel (touchpad, high-resolution wheel) rather than notches.
    bool precise = false;
    Phase phase = Phase::none;

    // From the two deltas and the phase of a QWheelEvent. Pixel deltas (a
    // touchpad) are points of travel. An angle that isn't a whole notch of 120
    // comes from a high-resolution wheel: one notch is counted as 6 points, so
    // a full notch of fine travel is one step, like a plain wheel's click.
    static ScrollInput fromWheel(QPoint angleDelta, QPoint pixelDelta, Qt::ScrollPhase phase);

    bool operator==(const ScrollInput &) const = default;
};

} // namespace glimpso
