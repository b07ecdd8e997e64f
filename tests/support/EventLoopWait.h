#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <functional>

// Runs the event loop until `condition` holds, or `milliseconds` have passed;
// whether it holds. Tests wait on conditions, never for fixed times.
inline bool processEventsUntil(const std::function<bool()> &condition, int milliseconds = 10000)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}
