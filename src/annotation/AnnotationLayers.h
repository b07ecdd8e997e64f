#pragma once

#include "annotation/Annotation.h"
#include "annotation/PixelBlocks.h"

#include <QBrush>
#include <QFont>
#include <QImage>
#include <QList>
#include <QPainterPath>
#include <QPen>
#include <QRegion>
#include <QString>
#include <QTimer>
#include <QVariantAnimation>

#include <functional>
#include <map>
#include <memory>
#include <optional>

class QPainter;

namespace glimpso {

// The live picture of an annotation list over a frozen image, in the host
// view's own coordinates (points, y down): the marks in list order, the shape
// being drawn, the mosaic being dragged, the selected mark's outline and
// grips, and the size readout that fades away. Marks are drawn by the
// flattener's own routine, so what is seen is what is saved.
//
// What lies below the marks (the host's image and veil) is painted by the
// host through `paintBase`. The layers keep it together with the marks in one
// cached picture, filled in only where it is shown and redrawn only where a
// change touched it; so a change above the marks (the stroke being drawn, the
// grips, the readout) costs a copy from the cache, never a redraw of every
// mark. Each change reports the area it touched through `onDamage`.
class AnnotationLayers {
public:
    using BasePainter = std::function<void(QPainter &, const QRect &)>;
    using DamageSink = std::function<void(const QRegion &)>;

    // How long the readout stays, and how long it takes to fade.
    static constexpr int hudHoldMs = 800;
    static constexpr int hudFadeMs = 400;

    // `image` carries its pixels per point as its device pixel ratio; it is
    // what mosaics pixellate. `viewSize` is the host's size in points.
    AnnotationLayers(const QImage &image, QSize viewSize, BasePainter paintBase, DamageSink onDamage);

    // The whole list, in draw order, in the view's coordinates (y down).
    void setAnnotations(const QList<Annotation> &annotations);
    // The shape being drawn: a plain stroke (no multiply, no blocks).
    void setPreview(const std::optional<QPainterPath> &path, const QPen &pen, const QBrush &fill);
    // The blocks of a mosaic being dragged, with blocks of `block` points.
    void setMosaicPreview(const std::optional<QRectF> &frame, qreal block);
    // The selected mark's box: a dashed outline 4 points outside it and eight grips on it.
    void setSelectionOutline(const std::optional<QRectF> &rect);
    // A selected line's three grips; the middle one (the bend) stands apart.
    void setPointHandles(const QList<QPointF> &points);
    // The readout badge above `near`, kept within `within`; it fades
    // hudHoldMs after the last call. Absent `within`: this view doesn't show it.
    void showHUD(const QString &text, QPointF near, const std::optional<QRectF> &within);
    // What lies below the marks changed in `area` (the host's veil moved).
    void invalidateBase(const QRegion &area);

    // The host's base, the marks and the shape being drawn, within `region`.
    void paintMarks(QPainter &painter, const QRegion &region);
    // Outline, grips and readout; they lie above the host's selection.
    void paintEditing(QPainter &painter) const;

    // Where the readout goes for a text of `textSize`: centred above `near`,
    // 8 points inside `within` at the sides and the bottom.
    static QRectF hudFrame(QSizeF textSize, QPointF near, const QRectF &within);
    // The blue of the annotation selection, apart from the capture's accent.
    static QColor selectionBlue();
    // The area a mark may paint, strokes, heads and halos included.
    static QRectF markArea(const Annotation &annotation);

    // What is on show, for tests.
    QString hudText() const { return m_hudText; }
    bool hudVisible() const { return m_hudFrame.has_value() && m_hudOpacity > 0; }
    qreal hudOpacity() const { return m_hudOpacity; }
    int hudHoldRemainingMs() const { return m_hudHold.isActive() ? m_hudHold.remainingTime() : -1; }
    std::optional<QRectF> hudShownFrame() const { return m_hudFrame; }
    // How often the image was pixellated (once per block size in use).
    int pixellations() const { return int(m_pixelBlocks.size()); }
    // How many marks were drawn since the start: the cache keeps this low.
    int marksDrawn() const { return m_marksDrawn; }
    bool hasCache() const { return !m_base.isNull(); }

private:
    bool needsCache() const { return !m_marks.isEmpty() || m_mosaicPreview.has_value(); }
    void damage(const QRegion &area);
    void damageBase(const QRegion &area);
    void renderBase(const QRegion &area);
    void paintMarkList(QPainter &painter, const QRectF &area);
    void paintMosaic(QPainter &painter, const QRectF &frame, qreal block);
    void paintPreview(QPainter &painter, const QRectF &clip) const;
    QRegion previewArea() const;
    QRegion editingArea() const;
    QRect hudArea() const;
    PixelBlocks &pixelBlocks(qreal block);
    void startHudFade();

    QImage m_image;
    QSize m_viewSize;
    BasePainter m_paintBase;
    DamageSink m_onDamage;

    QList<Annotation> m_marks;
    // Each mark's markArea, worked out once per change of the list.
    QList<QRectF> m_markAreas;
    qreal m_largestMosaicBlock = 0;
    std::optional<QPainterPath> m_preview;
    QPen m_previewPen;
    QBrush m_previewFill;
    std::optional<QRectF> m_mosaicPreview;
    qreal m_mosaicPreviewBlock = 0;
    std::optional<QRectF> m_selectionOutline;
    QList<QPointF> m_pointHandles;

    QFont m_hudFont;
    QString m_hudText;
    std::optional<QRectF> m_hudFrame;
    qreal m_hudOpacity = 0;
    QTimer m_hudHold;
    QVariantAnimation m_hudFade;

    // The host's base with the marks on it, at the image's density; valid
    // only within m_baseValid. Made when the first mark comes, let go with the last.
    QImage m_base;
    QRegion m_baseValid;
    std::map<int, std::unique_ptr<PixelBlocks>> m_pixelBlocks;
    int m_marksDrawn = 0;
};

} // namespace glimpso
