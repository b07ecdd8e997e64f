#pragma once

#include "settings/GlobalKeyGrabber.h"

#include <QByteArray>
#include <memory>

// Global shortcuts on X11: a passive grab of each combination on the root
// window, on a connection of glimpso's own, read through a socket notifier on
// the main thread. Each combination is grabbed four times, as is and with
// NumLock, CapsLock or both held, since the server compares the lock
// modifiers too. Keys are found through the server's current keyboard map and
// grabbed again whenever that map changes (another layout, xmodmap).
class X11KeyGrabber : public GlobalKeyGrabber
{
    Q_OBJECT

public:
    explicit X11KeyGrabber(QByteArray displayName = {}, QObject *parent = nullptr);
    ~X11KeyGrabber() override;

    // Whether the server answered; without it every grab fails with noConnection.
    bool isConnected() const;

    QString name() const override { return QStringLiteral("X11"); }
    Result grab(int id, const Hotkey &hotkey) override;
    void ungrab(int id) override;
    std::optional<uint16_t> keyCodeForScanCode(quint32 nativeScanCode) const override;

private:
    void readEvents();
    void keyboardMapChanged();

    struct State;
    std::unique_ptr<State> m_state;
};
