#include "acquire/DesktopSpace.h"

#include <cmath>

DesktopSpace::DesktopSpace(const QRect &primaryGeometry) : m_primary(primaryGeometry) {}

// Qt's bottom edge of the primary screen, as a continuous coordinate: a screen
// at y 0 with height 1080 covers [0, 1080).
static double primaryBottom(const QRect &primary) { return double(primary.y()) + primary.height(); }

QPointF DesktopSpace::toGlobal(const QPointF &qtPoint) const
{
    return {qtPoint.x() - m_primary.x(), primaryBottom(m_primary) - qtPoint.y()};
}

QPointF DesktopSpace::toQt(const QPointF &globalPoint) const
{
    return {globalPoint.x() + m_primary.x(), primaryBottom(m_primary) - globalPoint.y()};
}

QRectF DesktopSpace::toGlobal(const QRectF &qtRect) const
{
    const QRectF r = qtRect.normalized();
    return {r.x() - m_primary.x(), primaryBottom(m_primary) - (r.y() + r.height()), r.width(), r.height()};
}

QRectF DesktopSpace::toQt(const QRectF &globalRect) const
{
    const QRectF r = globalRect.normalized();
    return {r.x() + m_primary.x(), primaryBottom(m_primary) - (r.y() + r.height()), r.width(), r.height()};
}

QRect DesktopSpace::nativePixelRect(const QRect &qtGeometry, double devicePixelRatio)
{
    return {qtGeometry.topLeft(), QSize(int(std::lround(qtGeometry.width() * devicePixelRatio)),
                                        int(std::lround(qtGeometry.height() * devicePixelRatio)))};
}

std::uint32_t DesktopSpace::displayID(const QString &screenName, int index)
{
    if (screenName.isEmpty())
        return std::uint32_t(index);
    // FNV-1a over the UTF-8 name: stable across runs, unlike qHash's seed.
    std::uint32_t hash = 2166136261u;
    for (const char c : screenName.toUtf8()) {
        hash ^= std::uint8_t(c);
        hash *= 16777619u;
    }
    return hash;
}
