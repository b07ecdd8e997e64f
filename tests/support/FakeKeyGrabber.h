#pragma once

#include "settings/GlobalKeyGrabber.h"

#include <QString>
#include <QStringList>
#include <map>
#include <set>

// A display server's key grabs in memory. Like X11 it refuses a combination
// that is already held (by another id here, or by "another program" through
// `takenElsewhere`), and it writes down every call in order.
class FakeKeyGrabber : public GlobalKeyGrabber
{
public:
    std::map<int, Hotkey> held;
    std::set<std::pair<uint16_t, uint64_t>> takenElsewhere;
    QStringList calls; // "grab 2 Ctrl+Shift+2", "ungrab 2"

    QString name() const override { return QStringLiteral("fake"); }

    Result grab(int id, const Hotkey &hotkey) override
    {
        calls << QStringLiteral("grab %1 %2").arg(id).arg(hotkey.displayString());
        held.erase(id);
        if (takenElsewhere.count({ hotkey.keyCode, hotkey.modifierFlagsRaw }))
            return { 10, QStringLiteral("another program holds this combination") };
        for (const auto &[other, combination] : held) {
            if (combination == hotkey)
                return { 10, QStringLiteral("another program holds this combination") };
        }
        held[id] = hotkey;
        return {};
    }

    void ungrab(int id) override
    {
        calls << QStringLiteral("ungrab %1").arg(id);
        held.erase(id);
    }

    // As the display server reports a press of what `id` holds.
    void press(int id) { Q_EMIT pressed(id); }
    // As a keyboard change that lets another program take what `id` held.
    void lose(int id)
    {
        held.erase(id);
        Q_EMIT grabLost(id, 10, QStringLiteral("another program holds this combination"));
    }
};
