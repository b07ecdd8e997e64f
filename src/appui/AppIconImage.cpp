#include "appui/AppIconImage.h"

#include "appui/Lucide.h"

#include <QFile>
#include <QPaintDevice>
#include <QPainter>

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
    QFile file(resourcePath());
    // Drawn as the icon set draws its icons; a missing file gives a clear image.
    return Lucide::render(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(), size, devicePixelRatio);
}

void AppIconImage::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.drawImage(QRectF(0, 0, m_size, m_size), image(m_size, painter.device()->devicePixelRatioF()));
}
