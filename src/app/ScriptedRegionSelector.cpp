#include "app/ScriptedRegionSelector.h"

#include <QTimer>

ScriptedRegionSelector::ScriptedRegionSelector(QList<ScreenSnapshot> snapshots, std::optional<QRectF> rect,
                                               EditorAction action, Completion completion)
    : m_snapshots(std::move(snapshots))
    , m_rect(rect ? *rect : bounds(m_snapshots))
    , m_action(std::move(action))
    , m_completion(std::move(completion))
{
}

QRectF ScriptedRegionSelector::bounds(const QList<ScreenSnapshot> &snapshots)
{
    QRectF all;
    for (const ScreenSnapshot &snapshot : snapshots)
        all = all.isNull() ? snapshot.frame.normalized() : all.united(snapshot.frame.normalized());
    return all;
}

void ScriptedRegionSelector::present()
{
    // As with the overlay, the result comes in a later turn of the loop, once
    // the coordinator has stored this selector.
    QTimer::singleShot(0, this, [this] {
        finish(RegionResult::selected(m_rect, m_snapshots, m_action, {}));
    });
}

std::optional<RegionSelecting::ArmedSelection> ScriptedRegionSelector::armedSelection() const
{
    return ArmedSelection{m_rect, m_snapshots, {}};
}

void ScriptedRegionSelector::finish(const RegionResult &result)
{
    if (m_finished)
        return;
    m_finished = true;
    // The completion may drop this selector; keep what is needed on the stack.
    Completion completion = m_completion;
    completion(result);
}
