#pragma once

#include <QString>

#include <functional>

// Events of the system that must end a recording: what was recorded is kept.
class InterruptionWatch
{
public:
    enum class Reason {
        sleep,            // the computer is about to sleep
        sessionInactive,  // the session was locked or another one took the seat
        screensAsleep,    // the displays went to sleep (power saving, screen saver)
        displaysChanged,  // a display came, went or changed its mode
        thermalCritical,  // the machine is critically hot
    };

    virtual ~InterruptionWatch() = default;
    // Watches until stop(); `onEvent` runs on the main thread.
    virtual void start(std::function<void(Reason)> onEvent) = 0;
    virtual void stop() = 0;

    static QString describe(Reason reason);
};
