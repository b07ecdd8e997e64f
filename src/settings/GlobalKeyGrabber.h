#pragma once

#include "settings/Hotkey.h"

#include <QObject>
#include <QString>
#include <optional>

// What the hotkeys need from the display server: take a combination for the
// whole desktop under a stable id, give it back, and say when it was pressed.
// X11 grabs keys on the root window; a Wayland backend would bind through the
// desktop's global-shortcuts service. It sits beside Hotkey because it speaks
// in stored shortcuts and nothing else of the application.
class GlobalKeyGrabber : public QObject
{
    Q_OBJECT

public:
    // How one grab went. `status` 0 is success; otherwise the display server's
    // error code (X11: 10 is BadAccess, the combination belongs to another
    // client), or one of the negative codes below.
    struct Result
    {
        static constexpr int noConnection = -1; // no display server to ask
        static constexpr int noKeyOnKeyboard = -2; // the keyboard has no key for this code
        static constexpr int unknownKey = -3; // the code is not in the key table

        int status = 0;
        QString reason;
        bool ok() const { return status == 0; }
    };

    using QObject::QObject;

    // The backend's name for logs ("X11", "none").
    virtual QString name() const = 0;
    // Why no shortcut can work here; empty where grabs are possible.
    virtual QString unavailableReason() const { return {}; }
    // Takes `hotkey` for `id`, replacing whatever `id` held before.
    virtual Result grab(int id, const Hotkey &hotkey) = 0;
    // Gives back what `id` holds; nothing happens when it holds nothing.
    virtual void ungrab(int id) = 0;
    // The stored key code of a key that the display server names by
    // `nativeScanCode` in this session's keyboard map, unshifted, so that a key
    // press seen by one of glimpso's own windows can be compared with a
    // shortcut whatever character Shift turned it into.
    virtual std::optional<uint16_t> keyCodeForScanCode(quint32 nativeScanCode) const
    {
        Q_UNUSED(nativeScanCode);
        return std::nullopt;
    }

Q_SIGNALS:
    // The combination grabbed under `id` was pressed, wherever the focus was.
    void pressed(int id);
    // What `id` held could not be taken again after the keyboard changed
    // (another program got it first); `id` now holds nothing.
    void grabLost(int id, int status, const QString &reason);
};
