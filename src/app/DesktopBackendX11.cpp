#include "app/DesktopBackend.h"

#include "platform/x11/CaptureService.h"
#include "platform/x11/X11FocusKeeper.h"
#include "platform/x11/X11ScreenList.h"

DesktopBackend DesktopBackend::load()
{
    DesktopBackend backend;
    backend.name = QStringLiteral("X11");
    backend.capture = std::make_unique<CaptureService>(QByteArray(), &X11ScreenList::rootPixels);
    backend.screens = std::make_unique<X11ScreenList>();
    backend.focus = std::make_unique<X11FocusKeeper>();
    return backend;
}
