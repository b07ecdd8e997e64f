#pragma once

#include "annotation/Annotation.h"
#include "annotation/TextHost.h"

#include <QColor>
#include <QList>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <functional>

#include <optional>

class QWidget;

// One display's part of the overlay as the selection canvas drives it. Every
// call speaks global points (y up); a surface shows what falls on its display
// and ignores the rest.
class SelectorSurface
{
public:
    // Where the floating toolbar sits on this display: the widget that holds
    // it and the mapping of global rectangles to that widget's coordinates.
    struct ToolbarHost {
        QWidget *widget = nullptr;
        std::function<QRectF(const QRectF &)> toLocal;
    };

    virtual ~SelectorSurface() = default;

    // The display's frame in global points.
    virtual QRectF screenFrame() const = 0;

    // The first drag: outline and dim hole only, no handles, hint kept.
    virtual void renderLiveDrag(const QRectF &rect) = 0;
    // The selection with its dim hole; `armed` shows the handles and drops the hint.
    virtual void renderSelection(const QRectF &rect, bool armed) = 0;
    // The size badge next to the selection's top right corner, kept within `screen`.
    virtual void renderSizeReadout(const QString &text, const QRectF &rect, const QRectF &screen) = 0;
    // The cursor rectangles changed; ask the canvas again.
    virtual void invalidateCursors() = 0;

    // What the annotation editor shows, passed on unchanged.
    virtual void renderPreview(const std::optional<QPainterPath> &path, const QColor &stroke, qreal width,
                               const QColor &fill) = 0;
    virtual void renderMosaicPreview(const std::optional<QRectF> &frame, qreal block) = 0;
    virtual void renderAnnotations(const QList<glimpso::Annotation> &annotations) = 0;
    virtual void renderAnnotationSelection(const std::optional<QRectF> &rect) = 0;
    virtual void renderPointHandles(const std::optional<QList<QPointF>> &points) = 0;
    // The HUD text above the global point `near`, placed within `screen`
    // (the display nearest the pointer); the other displays hide theirs.
    virtual void showHUD(const QString &text, QPointF near, const QRectF &screen) = 0;
    // Where a text field may open on this display, with the mapping of global
    // rectangles to the view; none where the display cannot hold one.
    virtual std::optional<glimpso::TextHost> textHost() { return std::nullopt; }
    // None where the display cannot show a toolbar.
    virtual std::optional<ToolbarHost> toolbarHost() { return std::nullopt; }
};
