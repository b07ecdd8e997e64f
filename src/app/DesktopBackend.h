#pragma once

#include "acquire/CaptureServicing.h"
#include "acquire/FocusKeeper.h"
#include "acquire/ScreenList.h"

#include <QString>

#include <memory>

// What the coordinator needs from the desktop it runs on: pictures of the
// displays, the displays themselves, and the focus. The build picks the
// implementation (X11 now); a build without one gets a backend that answers
// politely that it cannot capture.
struct DesktopBackend {
    QString name;
    std::unique_ptr<CaptureServicing> capture;
    std::unique_ptr<ScreenList> screens;
    std::unique_ptr<FocusKeeper> focus;

    static DesktopBackend load();
};
