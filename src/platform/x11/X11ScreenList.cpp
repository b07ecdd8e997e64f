#include "platform/x11/X11ScreenList.h"

#include "acquire/DesktopSpace.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

QList<QScreen *> X11ScreenList::ordered()
{
    QList<QScreen *> list = QGuiApplication::screens();
    if (QScreen *primary = QGuiApplication::primaryScreen()) {
        list.removeAll(primary);
        list.prepend(primary);
    }
    return list;
}

static DesktopSpace desktopSpace()
{
    const QScreen *primary = QGuiApplication::primaryScreen();
    return DesktopSpace(primary ? primary->geometry() : QRect());
}

QList<ScreenList::Screen> X11ScreenList::screens() const
{
    const DesktopSpace space = desktopSpace();
    QList<Screen> result;
    const QList<QScreen *> list = ordered();
    for (int i = 0; i < list.size(); ++i) {
        const QScreen *screen = list.at(i);
        result.append(Screen{DesktopSpace::displayID(screen->name(), i), space.toGlobal(QRectF(screen->geometry())),
                             screen->devicePixelRatio()});
    }
    return result;
}

std::optional<int> X11ScreenList::mainIndex() const
{
    // The display under the pointer is the one the user works on; X has no
    // focused display of its own.
    const QPoint cursor = QCursor::pos();
    const QList<QScreen *> list = ordered();
    for (int i = 0; i < list.size(); ++i)
        if (list.at(i)->geometry().contains(cursor))
            return i;
    return list.isEmpty() ? std::nullopt : std::optional<int>(0);
}

QPointF X11ScreenList::mouseLocation() const { return desktopSpace().toGlobal(QPointF(QCursor::pos())); }

std::optional<QRect> X11ScreenList::rootPixels(std::uint32_t displayID)
{
    const QList<QScreen *> list = ordered();
    for (int i = 0; i < list.size(); ++i) {
        const QScreen *screen = list.at(i);
        if (DesktopSpace::displayID(screen->name(), i) == displayID)
            return DesktopSpace::nativePixelRect(screen->geometry(), screen->devicePixelRatio());
    }
    return std::nullopt;
}
