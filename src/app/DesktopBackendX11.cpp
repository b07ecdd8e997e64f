#include "app/DesktopBackend.h"

#include "platform/x11/CaptureService.h"
#include "platform/x11/X11FocusKeeper.h"
#include "platform/x11/X11KeyGrabber.h"
#include "platform/x11/X11ScreenList.h"
#include "platform/x11/X11WindowGrabber.h"
#include "platform/x11/X11WindowList.h"
#include "settings/NullKeyGrabber.h"

#include <QGuiApplication>

DesktopBackend DesktopBackend::load()
{
    DesktopBackend backend;
    backend.name = QStringLiteral("X11");
    auto capture = std::make_unique<CaptureService>(QByteArray(), &X11ScreenList::rootPixels);
    backend.screens = std::make_unique<X11ScreenList>();
    // Memory for every display's picture made ready now rather than at the
    // first capture, which would otherwise wait for it.
    QList<QRect> rects;
    for (const ScreenList::Screen &screen : backend.screens->screens())
        if (screen.displayID)
            if (const std::optional<QRect> rect = X11ScreenList::rootPixels(*screen.displayID))
                rects << *rect;
    capture->prepare(rects);
    CaptureService *service = capture.get();
    backend.capture = std::move(capture);
    backend.windows = std::make_unique<X11WindowList>();
    backend.windowGrabber =
        std::make_unique<X11WindowGrabber>(QByteArray(), [service](const QRect &rect) { return service->grab(rect); });
    backend.focus = std::make_unique<X11FocusKeeper>();
    // Grabs on an X server only reach the desktop when the desktop is that
    // server; under Wayland's X11 bridge they would see X11 windows only.
    if (QGuiApplication::platformName() != QLatin1String("xcb")) {
        backend.keys = std::make_unique<NullKeyGrabber>(
            QStringLiteral("the desktop is not X11 (Qt platform \"%1\")").arg(QGuiApplication::platformName()));
    } else if (auto grabber = std::make_unique<X11KeyGrabber>(); grabber->isConnected()) {
        backend.keys = std::move(grabber);
    } else {
        backend.keys = std::make_unique<NullKeyGrabber>(QStringLiteral("the X server cannot be reached"));
    }
    return backend;
}
