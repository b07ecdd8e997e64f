#include "annotation/ScrollSteps.h"

#include <cmath>

namespace glimpso {

int ScrollSteps::wholeSteps(const ScrollInput &input)
{
    if (input.phase == ScrollInput::Phase::momentum)
        return 0;
    if (!input.precise) {
        if (input.deltaY > 0)
            return 1;
        if (input.deltaY < 0)
            return -1;
        return 0;
    }
    if (input.phase == ScrollInput::Phase::began)
        m_gathered = 0;
    const double total = m_gathered + input.deltaY;
    const double steps = std::trunc(total / pointsPerStep);
    m_gathered = total - steps * pointsPerStep;
    return int(steps);
}

} // namespace glimpso
