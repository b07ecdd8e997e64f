#include "recording/InterruptionWatch.h"

QString InterruptionWatch::describe(Reason reason)
{
    switch (reason) {
    case Reason::sleep:
        return QStringLiteral("the system is going to sleep");
    case Reason::sessionInactive:
        return QStringLiteral("the session was locked or left");
    case Reason::screensAsleep:
        return QStringLiteral("the screens went to sleep");
    case Reason::displaysChanged:
        return QStringLiteral("the displays changed");
    case Reason::thermalCritical:
        return QStringLiteral("the machine is critically hot");
    }
    return {};
}
