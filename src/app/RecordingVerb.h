#pragma once

#include "app/RecordingCoordinator.h"
#include "settings/SettingsEnums.h"

#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

// The command line's recording verbs, after "gif" or "video":
//   [area|window|screen]                   as the tray's entries: a dragged area, a window, the screen
//   --rect WxH+X+Y [--seconds N] [--fps N] [--copy|--save] [--wait]
//                                          that rectangle (Qt's desktop pixels, y down), no picker and
//                                          no countdown; with --wait the answer comes once the file is written
struct RecordingVerb {
    RecordingCoordinator::Area area = RecordingCoordinator::Area::area;
    std::optional<QRect> rect;
    std::optional<int> seconds;
    std::optional<int> framesPerSecond;
    std::optional<RecordingAction> action;
    bool wait = false;

    // The arguments after the verb; absent with `error` set when they make no sense.
    static std::optional<RecordingVerb> parse(const QStringList &arguments, QString *error);
};
