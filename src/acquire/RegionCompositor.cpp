#include "acquire/RegionCompositor.h"

#include "appbase/AppError.h"

#include <QColorSpace>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace RegionCompositor {

namespace {

// The overlap of a frame and a rectangle, when it has an area.
std::optional<QRectF> overlap(const QRectF &frame, const QRectF &rect)
{
    const QRectF piece = frame.normalized().intersected(rect.normalized());
    if (piece.width() <= 0 || piece.height() <= 0)
        return std::nullopt;
    return piece;
}

// The pixels of `rect` in the snapshot's image: y flipped from points up to
// pixels down, rounded outwards, clamped to the image.
QRect pixelRect(const ScreenSnapshot &snapshot, const QRectF &rect)
{
    const QRectF r = rect.normalized();
    const QRectF frame = snapshot.frame.normalized();
    const double s = snapshot.scale;
    const double x = s * (r.left() - frame.left());
    const double y = s * ((frame.top() + frame.height()) - (r.top() + r.height()));
    const double w = s * r.width();
    const double h = s * r.height();
    const int left = int(std::floor(x));
    const int top = int(std::floor(y));
    const int right = int(std::ceil(x + w));
    const int bottom = int(std::ceil(y + h));
    const QRect integral(QPoint(left, top), QSize(right - left, bottom - top));
    return integral.intersected(QRect(QPoint(0, 0), snapshot.image.size()));
}

} // namespace

double outputScale(const QRectF &rect, const QList<ScreenSnapshot> &snapshots)
{
    QList<const ScreenSnapshot *> touched;
    for (const ScreenSnapshot &snapshot : snapshots)
        if (overlap(snapshot.frame, rect))
            touched << &snapshot;
    if (touched.isEmpty())
        for (const ScreenSnapshot &snapshot : snapshots)
            touched << &snapshot;
    if (touched.isEmpty())
        return 1.0;
    double scale = touched.first()->scale;
    for (const ScreenSnapshot *snapshot : touched)
        scale = std::max(scale, snapshot->scale);
    return scale;
}

std::optional<QImage> crop(const ScreenSnapshot &snapshot, const QRectF &rect)
{
    const QRect pixels = pixelRect(snapshot, rect);
    if (pixels.isEmpty())
        return std::nullopt;
    const QImage cropped = snapshot.image.copy(pixels);
    if (cropped.isNull())
        return std::nullopt;
    return cropped;
}

Composed compose(const QRectF &rect, const QList<ScreenSnapshot> &snapshots)
{
    const double scale = outputScale(rect, snapshots);
    const QRectF target = rect.normalized();

    struct Piece {
        const ScreenSnapshot *snapshot;
        QRectF rect;
    };
    QList<Piece> pieces;
    for (const ScreenSnapshot &snapshot : snapshots)
        if (const auto piece = overlap(snapshot.frame, target))
            pieces.append({&snapshot, *piece});
    if (pieces.isEmpty())
        throw AppError::croppingFailed();

    // One display at the output scale: the pixels themselves, no resampling.
    if (pieces.size() == 1 && pieces.first().snapshot->scale == scale && pieces.first().rect == target) {
        auto cropped = crop(*pieces.first().snapshot, pieces.first().rect);
        if (!cropped)
            throw AppError::croppingFailed();
        return {*cropped, scale};
    }

    const long width = std::lround(scale * target.width());
    const long height = std::lround(scale * target.height());
    if (width < 1 || height < 1)
        throw AppError::croppingFailed();
    QImage canvas(int(width), int(height), QImage::Format_ARGB32_Premultiplied);
    if (canvas.isNull())
        throw AppError::croppingFailed();
    canvas.fill(Qt::transparent);
    const QColorSpace space = pieces.first().snapshot->image.colorSpace();
    canvas.setColorSpace(space.isValid() ? space : QColorSpace(QColorSpace::SRgb));

    {
        QPainter painter(&canvas);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        const double targetTop = target.top() + target.height();
        for (const Piece &piece : pieces) {
            const QRect pixels = pixelRect(*piece.snapshot, piece.rect);
            if (pixels.isEmpty())
                continue;
            // The canvas is y down: a piece's distance from the rectangle's
            // upper edge in points is where it starts.
            const QRectF destination(scale * (piece.rect.left() - target.left()),
                                     scale * (targetTop - (piece.rect.top() + piece.rect.height())),
                                     scale * piece.rect.width(), scale * piece.rect.height());
            // Cut first, so that smoothing at the piece's edges never reaches
            // pixels beyond it.
            const QImage cropped = piece.snapshot->image.copy(pixels);
            if (cropped.isNull())
                continue;
            painter.drawImage(destination, cropped);
        }
    }
    return {canvas, scale};
}

} // namespace RegionCompositor
