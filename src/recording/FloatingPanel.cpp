#include "recording/FloatingPanel.h"

#include "acquire/DesktopSpace.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace FloatingPanel {

namespace {
DesktopSpace desktopSpace()
{
    const QScreen *primary = QGuiApplication::primaryScreen();
    return DesktopSpace(primary ? primary->geometry() : QRect());
}
} // namespace

void prepare(QWidget *window, const QString &title, Options options)
{
    Qt::WindowFlags flags = Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                            Qt::X11BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint;
    if (options.clickThrough)
        flags |= Qt::WindowTransparentForInput;
    window->setWindowFlags(flags);
    window->setWindowTitle(title);
    window->setAttribute(Qt::WA_ShowWithoutActivating);
    if (options.translucent) {
        window->setAttribute(Qt::WA_TranslucentBackground);
    } else {
        window->setAttribute(Qt::WA_NoSystemBackground);
        window->setAttribute(Qt::WA_OpaquePaintEvent);
    }
}

QRect qtGeometry(const QRectF &global)
{
    return desktopSpace().toQt(global).toAlignedRect();
}

QRectF globalRect(const QRect &qt)
{
    return desktopSpace().toGlobal(QRectF(qt));
}

} // namespace FloatingPanel
