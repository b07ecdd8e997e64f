#include "platform/x11/X11ScreenGeometry.h"

#include "acquire/DesktopSpace.h"

#include <QGuiApplication>
#include <QScreen>

X11ScreenGeometry::X11ScreenGeometry(QList<Screen> screens, QRect primaryGeometry)
    : m_screens(std::move(screens)), m_primary(primaryGeometry)
{
}

X11ScreenGeometry X11ScreenGeometry::current()
{
    QList<Screen> screens;
    for (const QScreen *screen : QGuiApplication::screens())
        screens << Screen{screen->geometry(), screen->devicePixelRatio()};
    const QScreen *primary = QGuiApplication::primaryScreen();
    return X11ScreenGeometry(screens, primary ? primary->geometry() : QRect());
}

const X11ScreenGeometry::Screen *X11ScreenGeometry::screenAt(const QRect &rootPixels) const
{
    const QPoint centre = rootPixels.center();
    for (const Screen &screen : m_screens)
        if (DesktopSpace::nativePixelRect(screen.qtGeometry, screen.scale).contains(centre))
            return &screen;
    for (const Screen &screen : m_screens)
        if (screen.qtGeometry == m_primary)
            return &screen;
    return m_screens.isEmpty() ? nullptr : &m_screens.first();
}

QRectF X11ScreenGeometry::toGlobal(const QRect &rootPixels) const
{
    const Screen *screen = screenAt(rootPixels);
    QRectF qt(rootPixels);
    if (screen && screen->scale != 1.0) {
        // Qt keeps a display's top left where the server has it and scales
        // the rest.
        const QPointF origin = screen->qtGeometry.topLeft();
        qt = QRectF(origin + (QPointF(rootPixels.topLeft()) - origin) / screen->scale,
                    QSizeF(rootPixels.size()) / screen->scale);
    }
    return DesktopSpace(m_primary).toGlobal(qt);
}

double X11ScreenGeometry::scaleAt(const QRect &rootPixels) const
{
    const Screen *screen = screenAt(rootPixels);
    return screen ? screen->scale : 1.0;
}
