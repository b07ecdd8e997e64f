#pragma once

#include "appbase/InstanceChannel.h"

#include <QString>

#include <functional>

// Only one copy of glimpso runs. Two ways, one for each direction:
// a second launch hands off to the copy that runs (and exits), and a new copy
// that must replace what runs claims the place (and the others quit).
class SingleInstance
{
public:
    SingleInstance(InstanceChannel &channel, qint64 processId, std::function<void()> quitApplication);

    // Asks a running copy to take over. True means this copy should exit.
    bool handOffToRunningCopy();
    // What to do when another copy hands off; only the first call counts.
    void onHandOff(std::function<void()> action);
    // Takes over from any other running copy. Tell the others first, listen
    // after that (so our own claim is not the one we obey), then ask those left
    // to quit. The last claimant wins.
    void claim();

    bool hasClaimed() const { return m_claimed; }

private:
    InstanceChannel &m_channel;
    QString m_processId;
    std::function<void()> m_quitApplication;
    bool m_observingHandOff = false;
    bool m_claimed = false;
};
