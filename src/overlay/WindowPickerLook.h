#pragma once

#include <QRectF>
#include <QSizeF>
#include <QString>

// The window picker's texts and where its pills go. Coordinates are a
// view's own, y down. Stateless.
namespace WindowPickerLook {

// The veil's alpha, the hole's corner radius, the outline's.
constexpr double dimAlpha = 0.25;
constexpr double holeRadius = 10.0;
constexpr double outlineRadius = 11.0;
constexpr double outlineWidth = 3.0;
constexpr double outlineOutset = 1.5;

// "XTerm · 484 × 316": the frame's size in whole points.
QString label(const QString &appName, const QSizeF &frameSize);
// What Shift does at the click: it swaps the background.
QString hint(bool transparentBackground);

// A pill of text `textSize`: 24 wider and 12 taller than its text, centred
// on `centreX` with its bottom edge at `bottom`, pushed to keep 8 from the
// view's left and right edges.
QRectF pill(const QSizeF &textSize, double centreX, double bottom, double viewWidth);

// The label's pill under the hovered window: 12 above the hole's bottom
// edge, its bottom edge no lower than 8 above the view's.
QRectF labelPill(const QSizeF &textSize, const QRectF &hole, const QSizeF &view);
// The hint's pill: centred, its bottom edge 80 below the view's top.
QRectF hintPill(const QSizeF &textSize, const QSizeF &view);

} // namespace WindowPickerLook
