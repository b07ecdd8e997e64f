#pragma once

#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QString>

#include <cstdint>

// The one place where Qt's desktop space and glimpso's global points meet.
//
// Qt speaks y-down device-independent pixels of the virtual desktop. glimpso's
// logic keeps global points with the origin at the bottom left of the primary
// display and y up, so that frames, selections and the compositor never care
// where Qt puts its origin. Nothing else converts between the two.
class DesktopSpace
{
public:
    // `primaryGeometry` is the primary screen's QScreen::geometry().
    explicit DesktopSpace(const QRect &primaryGeometry);

    QPointF toGlobal(const QPointF &qtPoint) const;
    QPointF toQt(const QPointF &globalPoint) const;
    QRectF toGlobal(const QRectF &qtRect) const;
    QRectF toQt(const QRectF &globalRect) const;

    // Where a screen's pixels start on the X root window: Qt keeps a screen's
    // top left where the server has it and scales its size only.
    static QRect nativePixelRect(const QRect &qtGeometry, double devicePixelRatio);

    // The identifier of a display for this session: its output name hashed,
    // or its index when the platform gives it no name.
    static std::uint32_t displayID(const QString &screenName, int index);

private:
    QRect m_primary;
};
