#pragma once

#include "annotation/ScrollInput.h"

namespace glimpso {

// Turns scroll events into signed whole steps for sizing things with the
// wheel. A notched wheel gives one step per click; fine-grained input is
// gathered, 6 points of travel to a step, and the rest is kept for the next
// event of the gesture. Inertia gives nothing.
class ScrollSteps {
public:
    static constexpr double pointsPerStep = 6;

    int wholeSteps(const ScrollInput &input);
    double gathered() const { return m_gathered; }

private:
    double m_gathered = 0;
};

} // namespace glimpso
