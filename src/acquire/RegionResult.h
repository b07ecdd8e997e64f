#pragma once

#include "annotation/EditorAction.h"
#include "acquire/ScreenSnapshot.h"
#include "annotation/Annotation.h"

#include <QList>
#include <QRectF>
#include <QString>

#include <variant>

// What the overlay hands back to the coordinator.
struct RegionResult {
    // An action chosen on the toolbar, or the text hotkey over an armed
    // selection. `rect` is in global points; `annotations` in image points.
    struct Selected {
        QRectF rect;
        QList<ScreenSnapshot> snapshots;
        EditorAction action;
        QList<glimpso::Annotation> annotations;
    };
    // A finished drag in a text capture, or with editing after the capture.
    struct Area {
        QRectF rect;
        QList<ScreenSnapshot> snapshots;
    };
    struct Cancelled {};

    std::variant<Selected, Area, Cancelled> value;

    static RegionResult selected(QRectF rect, QList<ScreenSnapshot> snapshots, EditorAction action,
                                 QList<glimpso::Annotation> annotations)
    {
        return {Selected{rect, std::move(snapshots), std::move(action), std::move(annotations)}};
    }
    static RegionResult area(QRectF rect, QList<ScreenSnapshot> snapshots) { return {Area{rect, std::move(snapshots)}}; }
    static RegionResult cancelled() { return {Cancelled{}}; }

    // For logs: the case, and the rectangle where there is one.
    QString description() const;
};
