#include "app/TrayIcons.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

#include <algorithm>
#include <cmath>

namespace TrayIcons {

namespace {

constexpr qreal designUnits = 18.0;
const QColor recordingRed(0xFF, 0x3B, 0x30);

QImage canvas(int pixels)
{
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void beginDesign(QPainter &painter, int pixels)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels / designUnits, pixels / designUnits);
}

QIcon iconOf(QImage (*draw)(int, const QColor &), const QColor &ink)
{
    QIcon icon;
    for (const int pixels : sizes)
        icon.addPixmap(QPixmap::fromImage(draw(pixels, ink)));
    return icon;
}

QColor inkFor(bool darkPanel)
{
    return darkPanel ? QColor(Qt::white) : QColor(Qt::black);
}

} // namespace

QImage marquee(int pixels, const QColor &ink)
{
    // Drawn in whole pixels rather than scaled: at 16 to 32 pixels a line of
    // 1.35 units scaled would smear over two pixel columns.
    QImage image = canvas(pixels);
    QPainter painter(&image);
    const qreal scale = pixels / designUnits;
    const int line = std::max(1, qRound(1.35 * scale));
    // Line centres where a line of `line` pixels covers whole pixels.
    const auto snap = [line](qreal at) { return line % 2 ? std::floor(at) + 0.5 : std::round(at); };
    const qreal low = snap(3.25 * scale);
    const qreal high = snap(14.75 * scale);

    QPen dashed(ink, line, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    // Qt counts dashes in line widths.
    dashed.setDashPattern({std::max(1.0, std::round(1.9 * scale)) / line, std::max(1.0, std::round(1.5 * scale)) / line});
    dashed.setDashOffset(std::round(0.4 * scale) / line);
    painter.setPen(dashed);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(QPointF(low, low), QPointF(high, high)));

    // A hollow handle on each corner, the dashes punched out under it.
    // One pixel up to 35 pixels: a thicker outline fills the small handle.
    const int handleLine = std::max(1, int(scale));
    int handle = std::max(3, qRound(3.4 * scale));
    // Centred on the line: both odd or both even.
    if (handle % 2 != line % 2)
        ++handle;
    for (const qreal x : {low, high}) {
        for (const qreal y : {low, high}) {
            const QRect box(qRound(x - handle / 2.0), qRound(y - handle / 2.0), handle, handle);
            painter.setCompositionMode(QPainter::CompositionMode_Clear);
            painter.fillRect(box, Qt::black);
            painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
            painter.fillRect(box, ink);
            painter.setCompositionMode(QPainter::CompositionMode_Clear);
            painter.fillRect(box.adjusted(handleLine, handleLine, -handleLine, -handleLine), Qt::black);
            painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        }
    }
    return image;
}

QImage recording(int pixels, const QColor &ink)
{
    QImage image = canvas(pixels);
    QPainter painter(&image);
    beginDesign(painter, pixels);
    painter.setPen(QPen(ink, 1.6));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(2, 2, designUnits - 4, designUnits - 4));
    painter.setPen(Qt::NoPen);
    painter.setBrush(recordingRed);
    painter.drawEllipse(QRectF(5.5, 5.5, designUnits - 11, designUnits - 11));
    return image;
}

QIcon marqueeIcon(bool darkPanel)
{
    return iconOf(&marquee, inkFor(darkPanel));
}

QIcon recordingIcon(bool darkPanel)
{
    return iconOf(&recording, inkFor(darkPanel));
}

bool desktopIsDark()
{
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

} // namespace TrayIcons
