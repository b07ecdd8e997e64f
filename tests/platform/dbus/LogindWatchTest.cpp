#include "platform/dbus/LogindWatch.h"

#include "EventLoopWait.h"
#include "PrivateBus.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>

#include <gtest/gtest.h>

namespace {

const QString sessionPath = QStringLiteral("/org/freedesktop/login1/session/_31");

// logind's manager as far as a recording listens to it: the session of a
// process, and the sleep signal.
class FakeLogindManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    quint32 askedFor = 0;

public Q_SLOTS:
    QDBusObjectPath GetSessionByPID(quint32 pid)
    {
        askedFor = pid;
        return QDBusObjectPath(sessionPath);
    }

Q_SIGNALS:
    void PrepareForSleep(bool start);
};

class LogindWatchTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!bus.isUp())
            GTEST_SKIP() << "no dbus-daemon";
        service = bus.connect(QStringLiteral("logind"));
        ASSERT_TRUE(service.registerObject(LogindWatch::managerPath, &manager, QDBusConnection::ExportAllSlots |
                                                                                  QDBusConnection::ExportAllSignals));
        ASSERT_TRUE(service.registerService(LogindWatch::service));
        client = bus.connect(QStringLiteral("glimpso"));
    }

    void sessionSignal(const QString &interface, const QString &name, const QVariantList &arguments)
    {
        QDBusMessage signal = QDBusMessage::createSignal(sessionPath, interface, name);
        signal.setArguments(arguments);
        service.send(signal);
    }

    // Waits until the watch has found the session and its matches are in place.
    bool sessionFound(LogindWatch &watch)
    {
        if (!processEventsUntil([&] { return !watch.sessionPath().isEmpty(); }, 3000))
            return false;
        // The match rules reach the bus a moment after the answer.
        processEventsUntil([] { return false; }, 50);
        return true;
    }

    PrivateBus bus;
    QDBusConnection service{QStringLiteral("none")};
    QDBusConnection client{QStringLiteral("none")};
    FakeLogindManager manager;
};

TEST_F(LogindWatchTest, SleepIsTold)
{
    LogindWatch watch(client, 4242);
    QList<InterruptionWatch::Reason> told;
    watch.start([&](InterruptionWatch::Reason reason) { told << reason; });
    ASSERT_TRUE(sessionFound(watch));
    EXPECT_EQ(manager.askedFor, 4242u);
    Q_EMIT manager.PrepareForSleep(false); // waking up is no reason
    Q_EMIT manager.PrepareForSleep(true);
    ASSERT_TRUE(processEventsUntil([&] { return !told.isEmpty(); }, 3000));
    EXPECT_EQ(told, QList<InterruptionWatch::Reason>{InterruptionWatch::Reason::sleep});
}

TEST_F(LogindWatchTest, ALockedOrInactiveSessionIsTold)
{
    LogindWatch watch(client, 4242);
    QList<InterruptionWatch::Reason> told;
    watch.start([&](InterruptionWatch::Reason reason) { told << reason; });
    ASSERT_TRUE(sessionFound(watch));
    EXPECT_EQ(watch.sessionPath(), sessionPath);
    sessionSignal(LogindWatch::sessionInterface, QStringLiteral("Lock"), {});
    ASSERT_TRUE(processEventsUntil([&] { return told.size() == 1; }, 3000));
    sessionSignal(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"),
                  {LogindWatch::sessionInterface, QVariantMap{{QStringLiteral("Active"), true}}, QStringList()});
    sessionSignal(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"),
                  {LogindWatch::sessionInterface, QVariantMap{{QStringLiteral("Active"), false}}, QStringList()});
    ASSERT_TRUE(processEventsUntil([&] { return told.size() == 2; }, 3000));
    EXPECT_EQ(told, QList<InterruptionWatch::Reason>(2, InterruptionWatch::Reason::sessionInactive));
}

TEST_F(LogindWatchTest, AfterStopNothingIsTold)
{
    LogindWatch watch(client, 4242);
    int told = 0;
    watch.start([&](InterruptionWatch::Reason) { ++told; });
    ASSERT_TRUE(sessionFound(watch));
    watch.stop();
    Q_EMIT manager.PrepareForSleep(true);
    sessionSignal(LogindWatch::sessionInterface, QStringLiteral("Lock"), {});
    EXPECT_FALSE(processEventsUntil([&] { return told > 0; }, 300));
}

TEST_F(LogindWatchTest, WithoutLogindNothingIsWatchedAndNothingFails)
{
    service.unregisterService(LogindWatch::service);
    LogindWatch watch(client, 4242);
    int told = 0;
    watch.start([&](InterruptionWatch::Reason) { ++told; });
    EXPECT_FALSE(processEventsUntil([&] { return !watch.sessionPath().isEmpty(); }, 300));
    watch.stop();
}

} // namespace

#include "LogindWatchTest.moc"
