#include "overlay/WindowPickerLook.h"

#include <algorithm>
#include <cmath>

namespace WindowPickerLook {

QString label(const QString &appName, const QSizeF &frameSize)
{
    return QStringLiteral("%1 \u00b7 %2 \u00d7 %3")
        .arg(appName)
        .arg(qlonglong(std::lround(frameSize.width())))
        .arg(qlonglong(std::lround(frameSize.height())));
}

QString hint(bool transparentBackground)
{
    return QStringLiteral("Click a window   \u00b7   Hold Shift for %1   \u00b7   Esc to cancel")
        .arg(transparentBackground ? QStringLiteral("the colour background") : QStringLiteral("a transparent background"));
}

QRectF pill(const QSizeF &textSize, double centreX, double bottom, double viewWidth)
{
    const double width = textSize.width() + 24.0;
    const double height = textSize.height() + 12.0;
    double left = centreX - width / 2.0;
    left = std::min(left, viewWidth - 8.0 - width);
    left = std::max(left, 8.0);
    return QRectF(left, bottom - height, width, height);
}

QRectF labelPill(const QSizeF &textSize, const QRectF &hole, const QSizeF &view)
{
    const double bottom = std::min(hole.bottom() - 12.0, view.height() - 8.0);
    return pill(textSize, hole.center().x(), bottom, view.width());
}

QRectF hintPill(const QSizeF &textSize, const QSizeF &view)
{
    return pill(textSize, view.width() / 2.0, 80.0, view.width());
}

} // namespace WindowPickerLook
