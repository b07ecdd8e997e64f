#include "appui/AppIconImage.h"

#include <QPaintDevice>
#include <QPainter>
#include <QSvgRenderer>

#include <cmath>

AppIconImage::AppIconImage(int size, QWidget *parent)
    : QWidget(parent)
    , m_size(size)
{
    setFixedSize(size, size);
}

QString AppIconImage::resourcePath()
{
    return QStringLiteral(":/glimpso/glimpso.svg");
}

QImage AppIconImage::image(int size, qreal devicePixelRatio)
{
    const int side = std::max(1, int(std::lround(size * devicePixelRatio)));
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setDevicePixelRatio(devicePixelRatio);
    QSvgRenderer renderer(resourcePath());
    if (!renderer.isValid())
        return image;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(0, 0, size, size));
    return image;
}

void AppIconImage::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.drawImage(QRectF(0, 0, m_size, m_size), image(m_size, painter.device()->devicePixelRatioF()));
}
