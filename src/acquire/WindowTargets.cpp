#include "acquire/WindowTargets.h"

namespace WindowTargets {

QList<WindowTarget> select(const QList<WindowList::Entry> &entries, qint64 ownProcessID)
{
    QList<WindowTarget> targets;
    for (const WindowList::Entry &entry : entries) {
        if (!entry.isNormalLayer)
            continue;
        // glimpso's own windows (the editor, the settings, the picker itself)
        // are never captured this way.
        if (entry.processID && *entry.processID == ownProcessID)
            continue;
        if (!entry.windowID)
            continue;
        if (entry.opacity && *entry.opacity <= 0.0)
            continue;
        if (!entry.frame || entry.frame->width() < smallestSide || entry.frame->height() < smallestSide)
            continue;
        targets << WindowTarget{*entry.windowID, entry.appName, *entry.frame};
    }
    return targets;
}

std::optional<WindowTarget> hit(const QList<WindowTarget> &targets, const QPointF &point)
{
    for (const WindowTarget &target : targets) {
        // The left and bottom edges belong to the frame, the right and top
        // ones to what lies beyond.
        const QRectF f = target.frame.normalized();
        if (point.x() >= f.left() && point.x() < f.right() && point.y() >= f.top() && point.y() < f.bottom())
            return target;
    }
    return std::nullopt;
}

} // namespace WindowTargets
