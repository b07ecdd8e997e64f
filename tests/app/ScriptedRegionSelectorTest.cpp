#include "app/ScriptedRegionSelector.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <gtest/gtest.h>

namespace {
ScreenSnapshot shot(std::uint32_t id, QRectF frame)
{
    return ScreenSnapshot{id, QImage(int(frame.width()), int(frame.height()), QImage::Format_RGB32), frame, 1.0};
}
} // namespace

TEST(ScriptedRegionSelector, BoundsHoldEveryDisplay)
{
    EXPECT_EQ(ScriptedRegionSelector::bounds({shot(1, QRectF(0, 0, 100, 50)), shot(2, QRectF(100, -20, 60, 40))}),
              QRectF(0, -20, 160, 70));
    EXPECT_TRUE(ScriptedRegionSelector::bounds({}).isNull());
}

TEST(ScriptedRegionSelector, ChoosesItsRectangleOnceInALaterTurn)
{
    const QList<ScreenSnapshot> snapshots{shot(1, QRectF(0, 0, 100, 50))};
    QList<RegionResult> results;
    auto selector = std::make_shared<ScriptedRegionSelector>(snapshots, QRectF(10, 10, 20, 20), EditorAction::save(),
                                                             [&results](const RegionResult &r) { results << r; });
    selector->present();
    EXPECT_TRUE(results.isEmpty());
    const QDeadlineTimer deadline(10000);
    while (results.isEmpty() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    ASSERT_EQ(results.size(), 1);
    const auto *selected = std::get_if<RegionResult::Selected>(&results[0].value);
    ASSERT_NE(selected, nullptr);
    EXPECT_EQ(selected->rect, QRectF(10, 10, 20, 20));
    EXPECT_EQ(selected->action.kind(), EditorAction::Kind::save);
    EXPECT_EQ(selected->snapshots.size(), 1);
    EXPECT_TRUE(selected->annotations.isEmpty());
    selector->finish(RegionResult::cancelled());
    EXPECT_EQ(results.size(), 1);
}

TEST(ScriptedRegionSelector, WithoutARectangleItTakesEverything)
{
    const QList<ScreenSnapshot> snapshots{shot(1, QRectF(0, 0, 100, 50)), shot(2, QRectF(100, 0, 100, 50))};
    ScriptedRegionSelector selector(snapshots, std::nullopt, EditorAction::copy(), [](const RegionResult &) {});
    ASSERT_TRUE(selector.armedSelection().has_value());
    EXPECT_EQ(selector.armedSelection()->rect, QRectF(0, 0, 200, 50));
}
