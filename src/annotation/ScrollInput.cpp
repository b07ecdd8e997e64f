#include "annotation/ScrollInput.h"

namespace glimpso {

namespace {

// Points of fine travel that one notch of a high-resolution wheel stands for.
constexpr double pointsPerNotch = 6;
constexpr int angleUnitsPerNotch = 120;

ScrollInput::Phase phaseOf(Qt::ScrollPhase phase)
{
    switch (phase) {
    case Qt::ScrollBegin: return ScrollInput::Phase::began;
    case Qt::ScrollUpdate: return ScrollInput::Phase::changed;
    case Qt::ScrollEnd: return ScrollInput::Phase::ended;
    case Qt::ScrollMomentum: return ScrollInput::Phase::momentum;
    case Qt::NoScrollPhase: break;
    }
    return ScrollInput::Phase::none;
}

} // namespace

ScrollInput ScrollInput::fromWheel(QPoint angleDelta, QPoint pixelDelta, Qt::ScrollPhase phase)
{
    ScrollInput input;
    input.phase = phaseOf(phase);
    if (!pixelDelta.isNull()) {
        input.precise = true;
        input.deltaY = pixelDelta.y();
    } else if (angleDelta.y() % angleUnitsPerNotch != 0) {
        input.precise = true;
        input.deltaY = double(angleDelta.y()) / angleUnitsPerNotch * pointsPerNotch;
    } else {
        input.deltaY = angleDelta.y();
    }
    return input;
}

} // namespace glimpso
