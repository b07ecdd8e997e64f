#pragma once

#include "annotation/Annotation.h"
#include "annotation/CursorRect.h"
#include "annotation/TextHost.h"

#include <QColor>
#include <QList>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <optional>

namespace glimpso {

// What the annotation editor asks its host to show. Points and rectangles are
// in the host's coordinates (desktop points y up on the overlay, image points
// in the editor window). Every call replaces what the previous one of the same
// name showed; an absent value takes it away.
class AnnotationSurface {
public:
    virtual ~AnnotationSurface() = default;

    // The shape being dragged, stroked in `stroke` at `width` over a `fill`.
    virtual void renderPreview(const std::optional<QPainterPath> &path, const QColor &stroke, qreal width,
                               const QColor &fill) = 0;
    // The pixellated patch of a mosaic being dragged, with blocks of `block` points.
    virtual void renderMosaicPreview(const std::optional<QRectF> &frame, qreal block) = 0;
    // The whole list, in draw order.
    virtual void renderAnnotations(const QList<Annotation> &annotations) = 0;
    // The outline and eight grips of a selected mark without point handles.
    virtual void renderAnnotationSelection(const std::optional<QRectF> &rect) = 0;
    // The three grips of a selected line or arrow.
    virtual void renderPointHandles(const std::optional<QList<QPointF>> &points) = 0;
    // A short-lived readout ("Width 4pt") near a point.
    virtual void showHUD(const QString &text, QPointF near) = 0;
    // The hover cursors changed: ask the editor's cursorRects() again.
    virtual void invalidateCursors() = 0;
    // The view that holds a text field near the point, or none (then no text
    // entry starts).
    virtual std::optional<TextHost> textHost(QPointF near) = 0;
};

} // namespace glimpso
