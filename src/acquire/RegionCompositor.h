#pragma once

#include "acquire/ScreenSnapshot.h"

#include <QImage>
#include <QList>
#include <QRectF>

#include <optional>

// Cuts a rectangle of global points out of the display snapshots, also where
// displays of different scales meet. Stateless.
namespace RegionCompositor {

struct Composed {
    QImage image;
    double scale = 1.0;
};

// The largest scale among the snapshots the rectangle touches (all of them
// when it touches none); 1.0 without snapshots. Parts from displays of lower
// scale are scaled up, never the other way.
double outputScale(const QRectF &rect, const QList<ScreenSnapshot> &snapshots);

// The snapshot's pixels under `rect` (global points), rounded outwards to
// whole pixels and clamped to the image; absent when nothing is left.
std::optional<QImage> crop(const ScreenSnapshot &snapshot, const QRectF &rect);

// The picture under `rect` and its scale. A rectangle on one display at the
// output scale is copied pixel for pixel; anything else is drawn on a
// transparent canvas where no display covers it. Throws AppError
// croppingFailed when no snapshot is touched or no picture can be made.
Composed compose(const QRectF &rect, const QList<ScreenSnapshot> &snapshots);

} // namespace RegionCompositor
