#pragma once

#include <QRectF>
#include <Qt>

namespace glimpso {

// One hover area and the cursor it shows, in the host's coordinates. Lists of
// them are in priority order: a later rectangle wins where they overlap.
struct CursorRect {
    QRectF rect;
    Qt::CursorShape cursor = Qt::ArrowCursor;

    bool operator==(const CursorRect &) const = default;
};

} // namespace glimpso
