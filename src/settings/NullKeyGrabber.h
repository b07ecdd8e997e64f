#pragma once

#include "settings/GlobalKeyGrabber.h"

// Where no display server can grab keys (no X11 display, or a build without a
// backend): every grab fails politely and nothing is ever pressed. The hotkeys
// still work inside glimpso's own windows, and every action stays on the
// command line for the desktop's own shortcut settings to bind.
class NullKeyGrabber : public GlobalKeyGrabber
{
    Q_OBJECT

public:
    explicit NullKeyGrabber(QString why, QObject *parent = nullptr);

    QString name() const override { return QStringLiteral("none"); }
    QString unavailableReason() const override { return m_why; }
    Result grab(int id, const Hotkey &hotkey) override;
    void ungrab(int) override { }

private:
    QString m_why;
};
