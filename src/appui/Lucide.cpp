#include "appui/Lucide.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <array>
#include <cmath>

namespace {

struct IconName {
    const char *raw;
    // The file of the Lucide set; where the set has no icon under the case's
    // name, the nearest shape (docs/icons.md lists them).
    const char *file;
};

constexpr std::array<IconName, Lucide::iconCount> names{{
    {"mousePointer", "mouse-pointer"}, {"pencil", "pencil"}, {"highlighter", "highlighter"},
    {"line", "slash"}, {"arrowUpRight", "arrow-up-right"}, {"square", "square"}, {"circle", "circle"},
    {"type", "type"}, {"counter", "hash"}, {"mosaic", "grid-3x3"}, {"undo", "undo"}, {"redo", "redo"},
    {"copy", "copy"}, {"cloudUpload", "cloud-upload"}, {"save", "save"}, {"x", "x"},
    {"chevronDown", "chevron-down"}, {"smile", "smile"}, {"minus", "minus"}, {"plus", "plus"},
    {"scan", "scan"}, {"scanText", "scan-text"}, {"appWindow", "app-window"},
    {"messageWarning", "message-square-warning"}, {"history", "history"}, {"film", "film"},
    {"video", "video"}, {"stopSquare", "square-stop"}, {"monitor", "monitor"}, {"timer", "timer"},
    {"squarePen", "square-pen"}, {"folderOpen", "folder-open"}, {"settings", "settings"},
    {"refresh", "refresh-cw"}, {"power", "power"},
}};

QString number(qreal value)
{
    return QString::number(value, 'g', 6);
}

// Icons are drawn on the main thread only, so one plain cache serves.
QHash<QString, QImage> &imageCache()
{
    static QHash<QString, QImage> cache;
    return cache;
}

} // namespace

QString Lucide::rawValue() const
{
    return QString::fromLatin1(names[m_icon].raw);
}

QString Lucide::setName() const
{
    return QString::fromLatin1(names[m_icon].file);
}

QByteArray Lucide::elements() const
{
    QFile file(QStringLiteral(":/lucide/%1.svg").arg(setName()));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return elementsOf(file.readAll());
}

QByteArray Lucide::elementsOf(const QByteArray &svgFile)
{
    const qsizetype open = svgFile.indexOf("<svg");
    const qsizetype openEnd = open < 0 ? -1 : svgFile.indexOf('>', open);
    const qsizetype close = svgFile.lastIndexOf("</svg>");
    if (openEnd < 0 || close <= openEnd)
        return {};
    return svgFile.mid(openEnd + 1, close - openEnd - 1).trimmed();
}

QByteArray Lucide::svgDocument(const QByteArray &elements, qreal size, qreal stroke)
{
    return QStringLiteral("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%1\" "
                          "viewBox=\"0 0 24 24\" fill=\"none\" stroke=\"black\" stroke-width=\"%2\" "
                          "stroke-linecap=\"round\" stroke-linejoin=\"round\">")
               .arg(number(size), number(stroke))
               .toUtf8()
        + elements + "</svg>";
}

QImage Lucide::render(const QByteArray &svgDocument, qreal size, qreal devicePixelRatio)
{
    const int side = std::max(1, int(std::lround(size * devicePixelRatio)));
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setDevicePixelRatio(devicePixelRatio);
    QSvgRenderer renderer(svgDocument);
    if (!renderer.isValid())
        return image;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(0, 0, size, size));
    return image;
}

QImage Lucide::image(qreal size, qreal stroke, qreal devicePixelRatio) const
{
    const QString key = rawValue() % u'-' % number(size) % u'-' % number(stroke) % u'@' % number(devicePixelRatio);
    auto &cache = imageCache();
    if (const auto cached = cache.constFind(key); cached != cache.cend())
        return *cached;
    const QImage drawn = render(svgDocument(elements(), size, stroke), size, devicePixelRatio);
    cache.insert(key, drawn);
    return drawn;
}

QImage Lucide::tinted(qreal size, qreal stroke, const QColor &tint, qreal devicePixelRatio) const
{
    QImage painted = image(size, stroke, devicePixelRatio).copy();
    QPainter painter(&painted);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRectF(QPointF(), painted.deviceIndependentSize()), tint);
    return painted;
}

QIcon Lucide::icon(qreal size, qreal stroke, const QColor &tint) const
{
    QIcon icon;
    for (const qreal ratio : {1.0, 2.0})
        icon.addPixmap(QPixmap::fromImage(tinted(size, stroke, tint, ratio)));
    return icon;
}
