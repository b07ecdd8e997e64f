#pragma once

#include <QList>
#include <QPointF>
#include <QRectF>

#include <cstdint>
#include <optional>

// A display as a recording sees it, in global points (y up, origin at the
// bottom left of the primary display).
struct RecordingScreen {
    std::uint32_t displayID = 0;
    QRectF frame;
    // The frame less the desktop's panels and docks.
    QRectF visibleFrame;
    // Pixels per point.
    double scale = 1.0;

    friend bool operator==(const RecordingScreen &, const RecordingScreen &) = default;

    // The first screen whose frame holds `point` (a frame holds its left and
    // bottom edges, not its right and top ones), else the main one, else none.
    static std::optional<RecordingScreen> under(const QList<RecordingScreen> &screens, QPointF point,
                                                std::optional<int> mainIndex);
    // The desktop's screens now, primary first, from Qt.
    static QList<RecordingScreen> current();
    // The pointer now, in global points.
    static QPointF pointer();
};
