#include "recording/ThermalWatch.h"

#include "EventLoopWait.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

void write(const QString &path, const QByteArray &text)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

struct ThermalFixture : ::testing::Test {
    QTemporaryDir root;
    QString zone(int n, const QString &file) { return root.filePath(QStringLiteral("thermal_zone%1/%2").arg(n).arg(file)); }
};

using ThermalWatchTest = ThermalFixture;

TEST_F(ThermalWatchTest, FindsTheZonesWithACriticalTripPoint)
{
    write(zone(0, "temp"), "45000\n");
    write(zone(0, "trip_point_0_type"), "passive\n");
    write(zone(0, "trip_point_0_temp"), "90000\n");
    write(zone(0, "trip_point_1_type"), "critical\n");
    write(zone(0, "trip_point_1_temp"), "105000\n");
    write(zone(1, "temp"), "30000\n"); // no trip points
    write(zone(2, "trip_point_0_type"), "critical\n"); // no temperature
    write(zone(2, "trip_point_0_temp"), "100000\n");
    const QList<ThermalWatch::Zone> zones = ThermalWatch::zones(root.path());
    ASSERT_EQ(zones.size(), 1);
    EXPECT_EQ(zones[0].criticalMilli, 105000);
    EXPECT_FALSE(ThermalWatch::critical(zones));
    write(zone(0, "temp"), "105000\n");
    EXPECT_TRUE(ThermalWatch::critical(zones));
}

TEST_F(ThermalWatchTest, ASystemWithoutZonesIsNeverCritical)
{
    EXPECT_TRUE(ThermalWatch::zones(root.filePath("missing")).isEmpty());
    EXPECT_FALSE(ThermalWatch::critical({}));
}

TEST_F(ThermalWatchTest, TellsOnceWhenAZoneReachesItsCriticalPoint)
{
    write(zone(0, "temp"), "50000\n");
    write(zone(0, "trip_point_0_type"), "critical\n");
    write(zone(0, "trip_point_0_temp"), "100000\n");
    ThermalWatch watch(root.path(), 10);
    int told = 0;
    watch.start([&](InterruptionWatch::Reason reason) {
        EXPECT_EQ(reason, InterruptionWatch::Reason::thermalCritical);
        ++told;
    });
    EXPECT_FALSE(processEventsUntil([&] { return told > 0; }, 100));
    write(zone(0, "temp"), "101000\n");
    EXPECT_TRUE(processEventsUntil([&] { return told > 0; }, 2000));
    processEventsUntil([] { return false; }, 60);
    EXPECT_EQ(told, 1);
    watch.stop();
}

} // namespace
