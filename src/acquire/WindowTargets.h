#pragma once

#include "acquire/WindowList.h"
#include "acquire/WindowTarget.h"

#include <QList>
#include <QPointF>

#include <optional>

// Which windows can be picked, and which one lies under a point. Stateless.
namespace WindowTargets {

// Windows smaller than this, in points, in either direction are not targets.
constexpr double smallestSide = 40.0;

// The entries that are targets, in the list's (front to back) order: normal
// layer, not of this process, with an id, not fully transparent, and a
// frame of at least 40 by 40 points.
QList<WindowTarget> select(const QList<WindowList::Entry> &entries, qint64 ownProcessID);

// The first target in the list whose frame holds the point: the frontmost
// window under it, even where a larger one lies behind.
std::optional<WindowTarget> hit(const QList<WindowTarget> &targets, const QPointF &point);

} // namespace WindowTargets
