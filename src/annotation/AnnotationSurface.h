#pragma once

#include "annotation/Annotation.h"

#include <QColor>
#include <QList>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <Qt>

#include <optional>

namespace glimpso {

// A rectangle of the host and the pointer shown over it.
struct CursorRect {
    QRectF rect;
    Qt::CursorShape cursor;
};

// What the editor asks its host to show. Points are the host's coordinates.
class AnnotationSurface
{
public:
    virtual ~AnnotationSurface() = default;
    virtual void renderPreview(const std::optional<QPainterPath> &path, const QColor &stroke, qreal width,
                               const QColor &fill) = 0;
    virtual void renderMosaicPreview(const std::optional<QRectF> &frame, qreal block) = 0;
    virtual void renderAnnotations(const QList<Annotation> &annotations) = 0;
    virtual void renderAnnotationSelection(const std::optional<QRectF> &rect) = 0;
    virtual void renderPointHandles(const std::optional<QList<QPointF>> &points) = 0;
    virtual void showHUD(const QString &text, QPointF near) = 0;
    virtual void invalidateCursors() = 0;
};

} // namespace glimpso
