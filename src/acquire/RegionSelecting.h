#pragma once

#include "acquire/RegionResult.h"
#include "acquire/ScreenSnapshot.h"
#include "annotation/Annotation.h"

#include <QList>
#include <QRectF>

#include <optional>

// The frozen-screen overlay of one capture session, as the coordinator sees
// it. The overlay calls its completion once, with the session's result.
class RegionSelecting
{
public:
    // A selection that stands on the overlay with its toolbar.
    struct ArmedSelection {
        QRectF rect; // global points
        QList<ScreenSnapshot> snapshots;
        QList<glimpso::Annotation> annotations; // image points
    };

    virtual ~RegionSelecting() = default;
    virtual void present() = 0;
    virtual std::optional<ArmedSelection> armedSelection() const = 0;
    // Ends the session with `result`, exactly as the overlay's own controls do.
    virtual void finish(const RegionResult &result) = 0;
};
