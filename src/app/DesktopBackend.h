#pragma once

#include "acquire/CaptureServicing.h"
#include "acquire/FocusKeeper.h"
#include "acquire/ScreenList.h"
#include "acquire/WindowGrabbing.h"
#include "acquire/WindowList.h"
#include "settings/GlobalKeyGrabber.h"

#include <QString>

#include <memory>

// What the coordinator needs from the desktop it runs on: pictures of the
// displays, the displays themselves, the focus, the windows, and the global shortcuts. The build picks the
// implementation (X11 now); a build without one gets a backend that answers
// politely that it cannot capture.
struct DesktopBackend {
    QString name;
    std::unique_ptr<CaptureServicing> capture;
    std::unique_ptr<ScreenList> screens;
    std::unique_ptr<FocusKeeper> focus;
    // The desktop's windows and their pictures; null where windows can't be
    // listed or captured.
    std::unique_ptr<WindowList> windows;
    std::unique_ptr<WindowGrabbing> windowGrabber;
    // Never null: where shortcuts cannot be grabbed, a grabber that says why.
    std::unique_ptr<GlobalKeyGrabber> keys;

    static DesktopBackend load();
};
