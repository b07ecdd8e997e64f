#include "app/TrayIcons.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

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
    QImage image = canvas(pixels);
    QPainter painter(&image);
    beginDesign(painter, pixels);

    const QRectF square(3.25, 3.25, 11.5, 11.5);
    constexpr qreal lineWidth = 1.35;
    QPen dashed(ink, lineWidth, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    // Qt counts dashes in line widths.
    dashed.setDashPattern({1.9 / lineWidth, 1.5 / lineWidth});
    dashed.setDashOffset(0.4 / lineWidth);
    painter.setPen(dashed);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(square);

    constexpr qreal handle = 3.4;
    const QPointF corners[] = {square.topLeft(), square.topRight(), square.bottomLeft(), square.bottomRight()};
    for (const QPointF &corner : corners) {
        const QRectF box(corner.x() - handle / 2, corner.y() - handle / 2, handle, handle);
        QPainterPath path;
        path.addRoundedRect(box, 0.6, 0.6);
        // The dashes stop at the handle's edge.
        painter.setCompositionMode(QPainter::CompositionMode_Clear);
        painter.fillPath(path, Qt::black);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.strokePath(path, QPen(ink, 1.25));
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
