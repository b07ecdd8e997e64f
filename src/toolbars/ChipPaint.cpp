#include "toolbars/ChipPaint.h"

#include <QPainter>

namespace ChipPaint {

QColor faded(QColor colour, qreal strength)
{
    colour.setAlphaF(float(colour.alphaF() * strength));
    return colour;
}

void fillRounded(QPainter &painter, const QRectF &rect, const QColor &fill, qreal radius)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(rect, radius, radius);
    painter.restore();
}

} // namespace ChipPaint
