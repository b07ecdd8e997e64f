#pragma once

#include "appui/Lucide.h"

#include <QColor>
#include <QString>

// One page of a settings window as the sidebar lists it. `id` is the page's
// stable name (the settings window's tab names); the content is made by the
// shell's page callback.
struct SettingsPage {
    QString id;
    QString title;
    QString subtitle;
    Lucide symbol;
    // The colour of the page's icon tile.
    QColor tile;
    // Shows the title and subtitle above the content; pages that draw their
    // own top (About) leave it off.
    bool showsHeader = true;
    // Leaves a gap before this page in the sidebar.
    bool startsGroup = false;
};
