#pragma once

#include "recording/InterruptionWatch.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

// The machine's critical heat, as the kernel's thermal zones tell it: a zone
// whose temperature has reached its "critical" trip point. The zones are
// found once at the start and read every few seconds, which costs two small
// file reads a zone; a system that shows no readable zone is never critical.
class ThermalWatch : public QObject, public InterruptionWatch
{
public:
    struct Zone {
        QString temperatureFile;
        // Millidegrees Celsius.
        qint64 criticalMilli = 0;
        friend bool operator==(const Zone &, const Zone &) = default;
    };

    explicit ThermalWatch(QString root = QStringLiteral("/sys/class/thermal"), int intervalMs = 3000);

    void start(std::function<void(Reason)> onEvent) override;
    void stop() override;

    // The zones under `root` (thermal_zone*) that have a readable
    // temperature and a critical trip point.
    static QList<Zone> zones(const QString &root);
    // Whether any zone is at or past its critical point now.
    static bool critical(const QList<Zone> &zones);

private:
    QString m_root;
    QList<Zone> m_zones;
    QTimer m_poll;
    std::function<void(Reason)> m_onEvent;
    bool m_told = false;
};
