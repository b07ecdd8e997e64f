#include "recording/ThermalWatch.h"

#include <QDir>
#include <QFile>

namespace {

std::optional<qint64> readNumber(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    bool ok = false;
    const qint64 value = file.readAll().trimmed().toLongLong(&ok);
    return ok ? std::optional<qint64>(value) : std::nullopt;
}

QString readWord(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLatin1(file.readAll().trimmed());
}

} // namespace

ThermalWatch::ThermalWatch(QString root, int intervalMs) : m_root(std::move(root))
{
    m_poll.setInterval(intervalMs);
    connect(&m_poll, &QTimer::timeout, this, [this] {
        if (m_told || !critical(m_zones))
            return;
        m_told = true;
        if (m_onEvent)
            m_onEvent(Reason::thermalCritical);
    });
}

QList<ThermalWatch::Zone> ThermalWatch::zones(const QString &root)
{
    QList<Zone> found;
    const QDir folder(root);
    for (const QString &name : folder.entryList({QStringLiteral("thermal_zone*")}, QDir::Dirs | QDir::NoDotAndDotDot,
                                                QDir::Name)) {
        const QDir zone(folder.filePath(name));
        const QString temperature = zone.filePath(QStringLiteral("temp"));
        if (!readNumber(temperature))
            continue;
        std::optional<qint64> criticalPoint;
        for (const QString &type : zone.entryList({QStringLiteral("trip_point_*_type")}, QDir::Files)) {
            if (readWord(zone.filePath(type)) != u"critical")
                continue;
            QString temp = type;
            temp.replace(QStringLiteral("_type"), QStringLiteral("_temp"));
            const std::optional<qint64> value = readNumber(zone.filePath(temp));
            // A zone's trip points of 0 or less are unset.
            if (value && *value > 0 && (!criticalPoint || *value < *criticalPoint))
                criticalPoint = value;
        }
        if (criticalPoint)
            found.append({temperature, *criticalPoint});
    }
    return found;
}

bool ThermalWatch::critical(const QList<Zone> &zones)
{
    for (const Zone &zone : zones) {
        const std::optional<qint64> now = readNumber(zone.temperatureFile);
        if (now && *now >= zone.criticalMilli)
            return true;
    }
    return false;
}

void ThermalWatch::start(std::function<void(Reason)> onEvent)
{
    m_onEvent = std::move(onEvent);
    m_told = false;
    m_zones = zones(m_root);
    if (!m_zones.isEmpty())
        m_poll.start();
}

void ThermalWatch::stop()
{
    m_poll.stop();
    m_onEvent = {};
}
