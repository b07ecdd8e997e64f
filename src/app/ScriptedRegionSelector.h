#pragma once

#include "acquire/RegionSelecting.h"

#include <QObject>

#include <functional>

// A selector without an overlay: it chooses a fixed rectangle and action the
// moment it is presented. The command line's region and all verbs take their
// pictures through it, down the same road as the overlay's results.
class ScriptedRegionSelector : public QObject, public RegionSelecting
{
    Q_OBJECT

public:
    using Completion = std::function<void(const RegionResult &)>;
    // `rect` absent means all the snapshots together.
    ScriptedRegionSelector(QList<ScreenSnapshot> snapshots, std::optional<QRectF> rect, EditorAction action,
                           Completion completion);

    void present() override;
    std::optional<ArmedSelection> armedSelection() const override;
    void finish(const RegionResult &result) override;

    // The smallest rectangle that holds every snapshot's frame.
    static QRectF bounds(const QList<ScreenSnapshot> &snapshots);

private:
    QList<ScreenSnapshot> m_snapshots;
    QRectF m_rect;
    EditorAction m_action;
    Completion m_completion;
    bool m_finished = false;
};
