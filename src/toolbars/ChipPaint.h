#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

// What the chips of both toolbars share in their painting: a colour at a
// fraction of its strength, and a rounded ground in it.
namespace ChipPaint {

// `colour` with its alpha multiplied by `strength` (0 to 1).
QColor faded(QColor colour, qreal strength);
// An antialiased rounded rectangle in `fill`, without an outline.
void fillRounded(QPainter &painter, const QRectF &rect, const QColor &fill, qreal radius);

} // namespace ChipPaint
