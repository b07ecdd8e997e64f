#pragma once

#include "annotation/AnnotationToolbar.h"

#include <QRectF>
#include <QSize>

#include <functional>

class SelectorSurface;

// The action toolbar as the selection canvas places it: it floats next to the
// selection on the display that holds the selection's lower middle.
class CanvasToolbar : public glimpso::AnnotationToolbar
{
public:
    // The width the toolbar needs for its controls, in points.
    virtual qreal fittingWidth() const = 0;
    // Puts the toolbar on `surface` (the display it now belongs to) at
    // `frame`, in global points.
    virtual void place(SelectorSurface &surface, const QRectF &frame) = 0;
    // The size chip's figures, in physical pixels.
    virtual void setCurrentSize(const QSize &pixels) = 0;
    // Called when the toolbar's width changes, so that it can be placed again.
    virtual void setOnWidthChange(std::function<void()> onWidthChange) = 0;
};
