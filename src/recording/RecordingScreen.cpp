#include "recording/RecordingScreen.h"

#include "acquire/DesktopSpace.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

std::optional<RecordingScreen> RecordingScreen::under(const QList<RecordingScreen> &screens, QPointF point,
                                                      std::optional<int> mainIndex)
{
    for (const RecordingScreen &screen : screens) {
        const QRectF f = screen.frame.normalized();
        if (point.x() >= f.left() && point.x() < f.right() && point.y() >= f.top() && point.y() < f.bottom())
            return screen;
    }
    if (mainIndex && *mainIndex >= 0 && *mainIndex < screens.size())
        return screens.at(*mainIndex);
    return std::nullopt;
}

namespace {
DesktopSpace desktopSpace()
{
    const QScreen *primary = QGuiApplication::primaryScreen();
    return DesktopSpace(primary ? primary->geometry() : QRect());
}
} // namespace

QList<RecordingScreen> RecordingScreen::current()
{
    QList<QScreen *> list = QGuiApplication::screens();
    if (QScreen *primary = QGuiApplication::primaryScreen()) {
        list.removeAll(primary);
        list.prepend(primary);
    }
    const DesktopSpace space = desktopSpace();
    QList<RecordingScreen> screens;
    for (int i = 0; i < list.size(); ++i) {
        const QScreen *screen = list.at(i);
        screens.append({DesktopSpace::displayID(screen->name(), i), space.toGlobal(QRectF(screen->geometry())),
                        space.toGlobal(QRectF(screen->availableGeometry())), screen->devicePixelRatio()});
    }
    return screens;
}

QPointF RecordingScreen::pointer()
{
    return desktopSpace().toGlobal(QPointF(QCursor::pos()));
}
