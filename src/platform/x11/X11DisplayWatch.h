#pragma once

#include "recording/InterruptionWatch.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <memory>

class QSocketNotifier;
struct xcb_connection_t;

// The X server's word that a recording can no longer trust its geometry or
// its screens: a display came, went or changed its mode (RandR), the screen
// saver started (MIT-SCREEN-SAVER), or the displays went to power saving
// (DPMS, which sends no events and is asked every two seconds). On a
// connection of its own, read on the main thread as the server writes.
class X11DisplayWatch : public QObject, public InterruptionWatch
{
public:
    explicit X11DisplayWatch(QByteArray displayName = {}, int powerPollMs = 2000);
    ~X11DisplayWatch() override;

    void start(std::function<void(Reason)> onEvent) override;
    void stop() override;

    // Which of the server's watches are in place.
    bool watchesDisplays() const { return m_randrEvent >= 0; }
    bool watchesScreenSaver() const { return m_saverEvent >= 0; }
    bool watchesPower() const { return m_dpms; }

private:
    void readEvents();
    void checkPower();
    void tell(Reason reason);

    QByteArray m_displayName;
    xcb_connection_t *m_c = nullptr;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_powerPoll;
    std::function<void(Reason)> m_onEvent;
    int m_randrEvent = -1;
    int m_saverEvent = -1;
    bool m_dpms = false;
};
