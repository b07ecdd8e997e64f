#include "annotation/TextLook.h"

#include <QFontDatabase>
#include <QGlyphRun>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace glimpso::TextLook {

namespace {

// The red that stands in when a text's colour can't be used.
const QColor fallbackRed(0xFF, 0x3B, 0x30);

// Stroke width of the outline halo as a share of the font size; half of it
// lies outside the letters, the filled letters cover the other half.
constexpr double haloShare = 0.22;

// A device of 72 dots per inch: a font of point size s measured or laid out
// against it is s units tall, so sizes mean the same on every painter.
const QPaintDevice *referenceDevice()
{
    static const QImage device = [] {
        QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
        const int dotsPerMeter = qRound(72.0 / 0.0254);
        image.setDotsPerMeterX(dotsPerMeter);
        image.setDotsPerMeterY(dotsPerMeter);
        return image;
    }();
    return &device;
}

QStringList candidates(const TextFont &font)
{
    switch (font.kind) {
    case TextFont::Kind::family: return {font.familyName};
    case TextFont::Kind::system: return {};
    case TextFont::Kind::rounded: return {QStringLiteral("Quicksand"), QStringLiteral("Comfortaa")};
    case TextFont::Kind::serif: return {QStringLiteral("Noto Serif"), QStringLiteral("DejaVu Serif")};
    case TextFont::Kind::mono: return {QStringLiteral("Noto Sans Mono"), QStringLiteral("DejaVu Sans Mono")};
    }
    return {};
}

QString systemFamily()
{
    return QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
}

QFont sizedFont(const QString &family, double size, QFont::Weight weight)
{
    QFont font(family);
    font.setPointSizeF(std::max(size, 0.1));
    font.setWeight(weight);
    // Unhinted outlines scale linearly, so a text measured at one scale takes
    // the same room when drawn at another.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

// Lays out one line starting at (0, 0); trailing spaces count, so a box grows
// as a space is typed.
void layOutLine(QTextLayout &layout)
{
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setUseDesignMetrics(true);
    option.setFlags(QTextOption::IncludeTrailingSpaces);
    layout.setTextOption(option);
    layout.setCacheEnabled(true);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid()) {
        line.setLineWidth(1e6);
        line.setPosition(QPointF(0, 0));
    }
    layout.endLayout();
}

// The outline of every glyph, each on its own: stroking them one by one costs
// the antialiasing rasteriser a fraction of stroking one path of them all,
// and with the halo's opaque colour the result is the same.
QList<QPainterPath> glyphOutlines(const QTextLayout &layout, QPointF at)
{
    QList<QPainterPath> outlines;
    for (const QGlyphRun &run : layout.glyphRuns()) {
        const QRawFont rawFont = run.rawFont();
        const QList<quint32> indexes = run.glyphIndexes();
        const QList<QPointF> positions = run.positions();
        for (qsizetype i = 0; i < indexes.size() && i < positions.size(); ++i)
            outlines.append(rawFont.pathForGlyph(indexes[i]).translated(at + positions[i]));
    }
    return outlines;
}

void drawHalo(QPainter &painter, const QTextLayout &layout, QPointF at, const QColor &color, double width)
{
    const QPen pen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    for (const QPainterPath &glyph : glyphOutlines(layout, at))
        painter.strokePath(glyph, pen);
}

void drawLayout(QPainter &painter, const QTextLayout &layout, QPointF at, const QColor &color)
{
    painter.setPen(color);
    layout.draw(&painter, at);
}

} // namespace

QString familyFor(const TextFont &font)
{
    const QStringList wanted = candidates(font);
    if (wanted.isEmpty())
        return systemFamily();
    // Asking the font database costs far more than a measure, and boxes are
    // measured on every pointer move over text; fonts installed while the
    // program runs are seen at its next start.
    thread_local QHash<QStringList, QString> resolved;
    const auto known = resolved.constFind(wanted);
    if (known != resolved.constEnd())
        return *known;
    QString family = systemFamily();
    for (const QString &candidate : wanted) {
        if (!candidate.isEmpty() && QFontDatabase::hasFamily(candidate)) {
            family = candidate;
            break;
        }
    }
    resolved.insert(wanted, family);
    return family;
}

QFont font(const TextOptions &options)
{
    return sizedFont(familyFor(options.font), options.size, QFont::DemiBold);
}

QFont numberFont(double size)
{
    return sizedFont(systemFamily(), size, QFont::Bold);
}

QPointF insets(const TextOptions &options)
{
    const double s = options.size;
    switch (options.style) {
    case TextStyle::plain: return {2, 1};
    case TextStyle::outline: return {0.12 * s, 0.1 * s};
    case TextStyle::background: return {0.35 * s, 0.14 * s};
    }
    return {2, 1};
}

QSizeF measure(const QString &string, const QFont &font)
{
    if (string.isEmpty())
        return {0, 0};
    QTextLayout layout(string, font, referenceDevice());
    layOutLine(layout);
    if (layout.lineCount() == 0)
        return {0, 0};
    const QTextLine line = layout.lineAt(0);
    return {line.naturalTextWidth(), line.ascent() + line.descent()};
}

QSizeF boxSize(const QString &string, const TextOptions &options)
{
    const QSizeF text = measure(string, font(options));
    const QPointF inset = insets(options);
    return {std::ceil(text.width() + 2 * inset.x()), std::ceil(text.height() + 2 * inset.y())};
}

QColor contrast(const QColor &color)
{
    if (!color.isValid())
        return Qt::white;
    const QColor rgb = color.toRgb();
    const double luma = 0.299 * rgb.redF() + 0.587 * rgb.greenF() + 0.114 * rgb.blueF();
    return luma > 0.7 ? QColor(Qt::black) : QColor(Qt::white);
}

void draw(QPainter &painter, const QString &string, const TextOptions &options, const QColor &color,
          const QRectF &rect)
{
    const QColor ink = color.isValid() ? color : fallbackRed;
    QTextLayout layout(string, font(options), referenceDevice());
    layOutLine(layout);
    const QPointF at = rect.topLeft() + insets(options);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    switch (options.style) {
    case TextStyle::plain:
        drawLayout(painter, layout, at, ink);
        break;
    case TextStyle::outline:
        drawHalo(painter, layout, at, contrast(ink), haloShare * options.size);
        drawLayout(painter, layout, at, ink);
        break;
    case TextStyle::background: {
        const double radius = std::min(0.28 * options.size, rect.height() / 2.0);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        painter.drawRoundedRect(rect, radius, radius);
        drawLayout(painter, layout, at, contrast(ink));
        break;
    }
    }
    painter.restore();
}

void drawCentered(QPainter &painter, const QString &string, const QFont &font, const QColor &color,
                  QPointF center)
{
    QTextLayout layout(string, font, referenceDevice());
    layOutLine(layout);
    const QSizeF size = measure(string, font);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    drawLayout(painter, layout, center - QPointF(size.width() / 2.0, size.height() / 2.0), color);
    painter.restore();
}

} // namespace glimpso::TextLook
