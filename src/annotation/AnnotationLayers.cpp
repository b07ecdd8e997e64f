#include "annotation/AnnotationLayers.h"

#include "annotation/AnnotationRenderer.h"
#include "annotation/Handle.h"
#include "annotation/TextLook.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace glimpso {

namespace {

constexpr qreal outlineGap = 4;
constexpr qreal outlineWidth = 1.5;
constexpr qreal boxGripDiameter = 8;
constexpr qreal pointGripDiameter = 10;
// Room around grips and outlines for their strokes, shadows and anti-aliasing.
constexpr qreal gripReach = pointGripDiameter / 2 + outlineWidth + 3;

QRect aligned(const QRectF &rect)
{
    return rect.toAlignedRect();
}

bool isPolyline(const QPainterPath &path)
{
    if (path.elementCount() < 2 || !path.elementAt(0).isMoveTo())
        return false;
    for (int i = 1; i < path.elementCount(); ++i) {
        if (!path.elementAt(i).isLineTo())
            return false;
    }
    return true;
}

// Whether `now` is `before` with points added at its end.
bool extends(const QPainterPath &before, const QPainterPath &now)
{
    if (now.elementCount() <= before.elementCount())
        return false;
    for (int i = 0; i < before.elementCount(); ++i) {
        const QPainterPath::Element a = before.elementAt(i), b = now.elementAt(i);
        if (a.type != b.type || a.x != b.x || a.y != b.y)
            return false;
    }
    return true;
}

// The bounds of the points of `path` from `first` on.
QRectF pointsFrom(const QPainterPath &path, int first)
{
    qreal left = path.elementAt(first).x, right = left, top = path.elementAt(first).y, bottom = top;
    for (int i = first + 1; i < path.elementCount(); ++i) {
        const QPainterPath::Element e = path.elementAt(i);
        left = std::min(left, e.x);
        right = std::max(right, e.x);
        top = std::min(top, e.y);
        bottom = std::max(bottom, e.y);
    }
    return QRectF(QPointF(left, top), QPointF(right, bottom));
}

// The segments of a polyline that come within `area`, as one path: with
// round caps and joins each piece strokes exactly the pixels the whole line
// strokes there, and one path is filled once, so a translucent ink does not
// build up where pieces meet.
QPainterPath visiblePart(const QPainterPath &polyline, const QRectF &area, qreal reach)
{
    QPainterPath part;
    bool joined = false;
    for (int i = 1; i < polyline.elementCount(); ++i) {
        const QPointF from = polyline.elementAt(i - 1), to = polyline.elementAt(i);
        const QRectF segment = QRectF(from, to).normalized().adjusted(-reach, -reach, reach, reach);
        if (!segment.intersects(area)) {
            joined = false;
            continue;
        }
        if (!joined)
            part.moveTo(from);
        part.lineTo(to);
        joined = true;
    }
    return part;
}

qreal largestMosaicBlock(const QList<Annotation> &marks)
{
    qreal largest = 0;
    for (const Annotation &mark : marks) {
        if (const auto *mosaic = mark.as<Annotation::Mosaic>())
            largest = std::max(largest, qreal(mosaic->blockSize));
    }
    return largest;
}

QRegion mosaicAreas(const QList<Annotation> &marks)
{
    QRegion areas;
    for (const Annotation &mark : marks) {
        if (const auto *mosaic = mark.as<Annotation::Mosaic>())
            areas += aligned(mosaic->frame.adjusted(-4, -4, 4, 4));
    }
    return areas;
}

} // namespace

AnnotationLayers::AnnotationLayers(const QImage &image, QSize viewSize, BasePainter paintBase, DamageSink onDamage)
    : m_image(image), m_viewSize(viewSize), m_paintBase(std::move(paintBase)), m_onDamage(std::move(onDamage))
{
    m_hudFont = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    m_hudFont.setPixelSize(13);
    m_hudFont.setWeight(QFont::DemiBold);
    m_hudHold.setSingleShot(true);
    m_hudHold.setInterval(hudHoldMs);
    QObject::connect(&m_hudHold, &QTimer::timeout, [this] { startHudFade(); });
    m_hudFade.setDuration(hudFadeMs);
    m_hudFade.setStartValue(1.0);
    m_hudFade.setEndValue(0.0);
    QObject::connect(&m_hudFade, &QVariantAnimation::valueChanged, [this](const QVariant &value) {
        m_hudOpacity = value.toReal();
        damage(hudArea());
    });
    QObject::connect(&m_hudFade, &QVariantAnimation::finished, [this] {
        const QRect area = hudArea();
        m_hudOpacity = 0;
        m_hudFrame.reset();
        damage(area);
    });
}

QColor AnnotationLayers::selectionBlue()
{
    return QColor(0, 122, 255);
}

QRectF AnnotationLayers::markArea(const Annotation &annotation)
{
    const auto grown = [](const QRectF &rect, qreal by) { return rect.adjusted(-by, -by, by, by); };
    if (const auto *text = annotation.as<Annotation::Text>())
        return grown(QRectF(text->origin, TextLook::boxSize(text->string, text->options)), 4);
    if (const auto *arrow = annotation.as<Annotation::Arrow>())
        return grown(annotation.boundingRect(), std::max(4 * arrow->width, 12.0) + arrow->width + 2);
    if (const auto *line = annotation.as<Annotation::Line>())
        return grown(annotation.boundingRect(), line->width + 2);
    return grown(annotation.boundingRect(), 4);
}

// ---- changes ----

void AnnotationLayers::damage(const QRegion &area)
{
    const QRegion inside = area.intersected(QRect(QPoint(0, 0), m_viewSize));
    if (!inside.isEmpty() && m_onDamage)
        m_onDamage(inside);
}

void AnnotationLayers::damageBase(const QRegion &area)
{
    m_baseValid -= area;
    damage(area);
}

void AnnotationLayers::invalidateBase(const QRegion &area)
{
    m_baseValid -= area;
}

void AnnotationLayers::setAnnotations(const QList<Annotation> &annotations)
{
    // Only marks that changed, came or went are redrawn, with whatever lies
    // over or under them there.
    QRegion changed;
    QList<QRectF> areas;
    areas.reserve(annotations.size());
    const qsizetype count = std::max(annotations.size(), m_marks.size());
    for (qsizetype i = 0; i < count; ++i) {
        const bool before = i < m_marks.size(), after = i < annotations.size();
        if (before && after && m_marks[i] == annotations[i]) {
            areas.append(m_markAreas[i]);
            continue;
        }
        if (before)
            changed += aligned(m_markAreas[i]);
        if (after) {
            areas.append(markArea(annotations[i]));
            changed += aligned(areas.last());
        }
    }
    const qreal largest = largestMosaicBlock(annotations);
    if (largest != m_largestMosaicBlock) {
        // Every mosaic shows the blocks of the largest one.
        changed += mosaicAreas(m_marks) + mosaicAreas(annotations);
        m_largestMosaicBlock = largest;
    }
    m_marks = annotations;
    m_markAreas = areas;
    damageBase(changed);
}

QRegion AnnotationLayers::previewArea() const
{
    if (!m_preview)
        return {};
    const qreal reach = m_previewPen.widthF() / 2 + 2;
    return aligned(m_preview->boundingRect().adjusted(-reach, -reach, reach, reach));
}

void AnnotationLayers::setPreview(const std::optional<QPainterPath> &path, const QPen &pen, const QBrush &fill)
{
    // A freehand stroke grows at its end: only the new end is repainted.
    const bool grows = m_preview && path && pen == m_previewPen && fill == m_previewFill && isPolyline(*path)
                       && extends(*m_preview, *path);
    QRegion area = previewArea();
    if (grows) {
        const qreal reach = pen.widthF() / 2 + 2;
        area = aligned(pointsFrom(*path, m_preview->elementCount() - 1).adjusted(-reach, -reach, reach, reach));
    }
    m_preview = path;
    m_previewPen = pen;
    m_previewFill = fill;
    if (!grows)
        area += previewArea();
    damage(area);
}

void AnnotationLayers::setMosaicPreview(const std::optional<QRectF> &frame, qreal block)
{
    if (frame == m_mosaicPreview && block == m_mosaicPreviewBlock)
        return;
    QRegion area;
    if (m_mosaicPreview)
        area += aligned(m_mosaicPreview->adjusted(-2, -2, 2, 2));
    if (frame)
        area += aligned(frame->adjusted(-2, -2, 2, 2));
    m_mosaicPreview = frame;
    m_mosaicPreviewBlock = block;
    damageBase(area);
}

QRegion AnnotationLayers::editingArea() const
{
    QRegion area;
    if (m_selectionOutline) {
        const qreal reach = outlineGap + gripReach;
        area += aligned(m_selectionOutline->adjusted(-reach, -reach, reach, reach));
    }
    for (const QPointF &point : m_pointHandles)
        area += aligned(QRectF(point, QSizeF()).adjusted(-gripReach, -gripReach, gripReach, gripReach));
    return area;
}

void AnnotationLayers::setSelectionOutline(const std::optional<QRectF> &rect)
{
    const QRegion before = editingArea();
    m_selectionOutline = rect;
    damage(before + editingArea());
}

void AnnotationLayers::setPointHandles(const QList<QPointF> &points)
{
    const QRegion before = editingArea();
    m_pointHandles = points.mid(0, 3);
    damage(before + editingArea());
}

// ---- the readout ----

QRectF AnnotationLayers::hudFrame(QSizeF textSize, QPointF near, const QRectF &within)
{
    const qreal w = std::ceil(textSize.width()) + 24, h = std::ceil(textSize.height()) + 12;
    qreal x = near.x() - w / 2;
    x = std::max(x, within.left() + 8);
    x = std::min(x, within.right() - w - 8);
    // Above the pointer, and never closer than 8 to the bottom edge.
    const qreal y = std::min(near.y() - 22 - h, within.bottom() - 8 - h);
    return {x, y, w, h};
}

QRect AnnotationLayers::hudArea() const
{
    return m_hudFrame ? aligned(m_hudFrame->adjusted(-1, -1, 1, 1)) : QRect();
}

void AnnotationLayers::showHUD(const QString &text, QPointF near, const std::optional<QRectF> &within)
{
    QRegion area = hudArea();
    m_hudFade.stop();
    m_hudText = text;
    if (within) {
        const QFontMetricsF metrics(m_hudFont);
        m_hudFrame = hudFrame(QSizeF(metrics.horizontalAdvance(text), metrics.height()), near, *within);
        m_hudOpacity = 1;
        // Each new value keeps the badge up and starts the wait again.
        m_hudHold.start();
    } else {
        m_hudFrame.reset();
        m_hudOpacity = 0;
        m_hudHold.stop();
    }
    damage(area + hudArea());
}

void AnnotationLayers::startHudFade()
{
    if (m_hudFrame)
        m_hudFade.start();
}

// ---- painting ----

PixelBlocks &AnnotationLayers::pixelBlocks(qreal block)
{
    const int key = int(std::lround(block * m_image.devicePixelRatio()));
    std::unique_ptr<PixelBlocks> &blocks = m_pixelBlocks[key];
    if (!blocks)
        blocks = std::make_unique<PixelBlocks>(m_image, key);
    return *blocks;
}

void AnnotationLayers::paintMosaic(QPainter &painter, const QRectF &frame, qreal block)
{
    // The blocks the saved picture shows through the mosaic's frame.
    PixelBlocks &blocks = pixelBlocks(block);
    const qreal scale = m_image.devicePixelRatio();
    const QRectF framePixels(frame.topLeft() * scale, frame.size() * scale);
    const QRect pixels = framePixels.toAlignedRect().intersected(QRect(QPoint(0, 0), blocks.imageSize()));
    QImage patch = blocks.mirroredPatch(pixels);
    if (patch.isNull())
        return;
    patch.setDevicePixelRatio(scale);
    painter.save();
    painter.setClipRect(frame, Qt::IntersectClip);
    painter.drawImage(QPointF(pixels.topLeft()) / scale, patch);
    painter.restore();
}

void AnnotationLayers::paintMarkList(QPainter &painter, const QRectF &area)
{
    painter.setRenderHint(QPainter::Antialiasing, true);
    for (qsizetype i = 0; i < m_marks.size(); ++i) {
        const Annotation &mark = m_marks[i];
        if (!m_markAreas[i].intersects(area))
            continue;
        ++m_marksDrawn;
        if (const auto *mosaic = mark.as<Annotation::Mosaic>())
            paintMosaic(painter, mosaic->frame, m_largestMosaicBlock);
        else
            AnnotationRenderer::drawMark(painter, mark);
    }
}

void AnnotationLayers::renderBase(const QRegion &area)
{
    QPainter painter(&m_base);
    painter.setClipRegion(area);
    for (const QRect &rect : area)
        m_paintBase(painter, rect);
    if (m_mosaicPreview && m_mosaicPreview->intersects(area.boundingRect()))
        paintMosaic(painter, *m_mosaicPreview, std::max(m_largestMosaicBlock, m_mosaicPreviewBlock));
    paintMarkList(painter, area.boundingRect());
}

void AnnotationLayers::paintMarks(QPainter &painter, const QRegion &region)
{
    if (!needsCache()) {
        // Nothing to keep: the host's base straight onto the view, and the
        // cache's memory let go.
        if (!m_base.isNull()) {
            m_base = QImage();
            m_baseValid = QRegion();
        }
        for (const QRect &rect : region)
            m_paintBase(painter, rect);
    } else {
        const qreal scale = m_image.isNull() ? 1.0 : m_image.devicePixelRatio();
        if (m_base.isNull()) {
            m_base = QImage(int(std::ceil(m_viewSize.width() * scale)), int(std::ceil(m_viewSize.height() * scale)),
                            QImage::Format_ARGB32_Premultiplied);
            m_base.setDevicePixelRatio(scale);
            m_base.fill(Qt::transparent);
            m_baseValid = QRegion();
        }
        const QRegion missing = region.intersected(QRect(QPoint(0, 0), m_viewSize)) - m_baseValid;
        if (!missing.isEmpty()) {
            renderBase(missing);
            m_baseValid += missing;
        }
        for (const QRect &rect : region) {
            const QRectF source(rect.x() * scale, rect.y() * scale, rect.width() * scale, rect.height() * scale);
            painter.drawImage(QRectF(rect), m_base, source);
        }
    }
    if (m_preview) {
        painter.save();
        painter.setClipRegion(region);
        paintPreview(painter, region.boundingRect());
        painter.restore();
    }
}

void AnnotationLayers::paintPreview(QPainter &painter, const QRectF &clip) const
{
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(m_previewPen);
    painter.setBrush(m_previewFill);
    // A long freehand stroke is stroked only where it is repainted.
    if (m_previewFill.style() == Qt::NoBrush && isPolyline(*m_preview))
        painter.drawPath(visiblePart(*m_preview, clip, m_previewPen.widthF() / 2 + 2));
    else
        painter.drawPath(*m_preview);
}

void AnnotationLayers::paintEditing(QPainter &painter) const
{
    painter.setRenderHint(QPainter::Antialiasing, true);
    const QColor blue = selectionBlue();
    if (m_selectionOutline) {
        QPen dashed(blue, outlineWidth);
        // Dashes of 4 on 3 off, in pen widths.
        dashed.setDashPattern({4 / outlineWidth, 3 / outlineWidth});
        painter.setPen(dashed);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(m_selectionOutline->adjusted(-outlineGap, -outlineGap, outlineGap, outlineGap));
        painter.setPen(QPen(blue, outlineWidth));
        painter.setBrush(Qt::white);
        for (Handle handle : allHandles)
            painter.drawEllipse(anchor(handle, *m_selectionOutline), boxGripDiameter / 2, boxGripDiameter / 2);
    }
    for (int i = 0; i < m_pointHandles.size(); ++i) {
        const QPointF centre = m_pointHandles[i];
        const qreal r = pointGripDiameter / 2;
        // A soft shadow just below the grip.
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 40));
        painter.drawEllipse(centre + QPointF(0, 0.5), r + 1.5, r + 1.5);
        // The middle grip (the bend) is the reverse of the ends.
        const bool middle = i == 1;
        painter.setPen(QPen(middle ? QColor(Qt::white) : blue, outlineWidth));
        painter.setBrush(middle ? blue : QColor(Qt::white));
        painter.drawEllipse(centre, r, r);
    }
    if (m_hudFrame && m_hudOpacity > 0) {
        painter.save();
        painter.setOpacity(m_hudOpacity);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 191));
        painter.drawRoundedRect(*m_hudFrame, 6, 6);
        painter.setFont(m_hudFont);
        painter.setPen(Qt::white);
        painter.drawText(m_hudFrame->adjusted(0, 6, 0, -6), Qt::AlignCenter, m_hudText);
        painter.restore();
    }
}

} // namespace glimpso
