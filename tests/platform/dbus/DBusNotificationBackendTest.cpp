#include "platform/dbus/DBusNotificationBackend.h"

#include "EventLoopWait.h"
#include "PrivateBus.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>

#include <gtest/gtest.h>

#include <optional>

// A notification server on the private bus: it keeps each Notify call and
// answers with ids from 41, or refuses when told to.
class FakeNotificationServer : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Call {
        QString appName;
        QString summary;
        QString body;
        QStringList actions;
        QVariantMap hints;
        int timeout = 0;
    };
    QList<Call> calls;
    bool refuse = false;
    uint nextID = 41;

public Q_SLOTS:
    uint Notify(const QString &appName, uint, const QString &, const QString &summary, const QString &body,
                const QStringList &actions, const QVariantMap &hints, int timeout)
    {
        if (refuse) {
            sendErrorReply(QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"), QStringLiteral("not today"));
            return 0;
        }
        calls.append({appName, summary, body, actions, hints, timeout});
        return nextID++;
    }
    QString GetServerInformation(QString &vendor, QString &version, QString &specVersion)
    {
        vendor = QStringLiteral("tests");
        version = QStringLiteral("1.0");
        specVersion = QStringLiteral("1.2");
        return QStringLiteral("fake-server");
    }
};

namespace {

struct DBusNotificationBackendTest : ::testing::Test {
    PrivateBus bus;
    FakeNotificationServer server;
    std::optional<QDBusConnection> serverConnection;
    std::unique_ptr<DBusNotificationBackend> backend;

    void SetUp() override
    {
        if (!bus.isUp())
            GTEST_SKIP() << "no dbus-daemon to run a private bus";
        backend = std::make_unique<DBusNotificationBackend>(bus.connect(QStringLiteral("glimpso")));
    }

    void startServer()
    {
        serverConnection = bus.connect(QStringLiteral("server"));
        ASSERT_TRUE(serverConnection->registerObject(QStringLiteral("/org/freedesktop/Notifications"), &server,
                                                     QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(serverConnection->registerService(QStringLiteral("org.freedesktop.Notifications")));
    }

    void emitSignal(const QString &name, const QVariantList &arguments)
    {
        QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                                         QStringLiteral("org.freedesktop.Notifications"), name);
        signal.setArguments(arguments);
        serverConnection->send(signal);
    }

    std::optional<NotificationBackend::SendResult> send(const NotificationBackend::Notification &notification)
    {
        std::optional<NotificationBackend::SendResult> result;
        backend->send(notification, [&](const NotificationBackend::SendResult &r) { result = r; });
        processEventsUntil([&] { return result.has_value(); });
        return result;
    }
};

TEST_F(DBusNotificationBackendTest, AServerThatAnswersIsAvailable)
{
    startServer();
    std::optional<QString> who;
    bool available = false;
    backend->probe([&](bool ok, const QString &name) { available = ok, who = name; });
    ASSERT_TRUE(processEventsUntil([&] { return who.has_value(); }));
    EXPECT_TRUE(available);
    EXPECT_EQ(*who, "fake-server 1.0");
}

TEST_F(DBusNotificationBackendTest, NoServerIsNotAvailable)
{
    std::optional<bool> available;
    backend->probe([&](bool ok, const QString &) { available = ok; });
    ASSERT_TRUE(processEventsUntil([&] { return available.has_value(); }));
    EXPECT_FALSE(*available);
}

TEST_F(DBusNotificationBackendTest, NotifyCarriesTitleBodyButtonsAndHints)
{
    startServer();
    const auto result = send({"Screenshot saved", "a.png", {{"default", ""}, {"open-file", "Open"}}, false});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, NotificationBackend::SendResult::Status::sent);
    EXPECT_EQ(result->id, 41u);
    ASSERT_EQ(server.calls.size(), 1);
    const FakeNotificationServer::Call &call = server.calls[0];
    EXPECT_EQ(call.appName, "glimpso");
    EXPECT_EQ(call.summary, "Screenshot saved");
    EXPECT_EQ(call.body, "a.png");
    EXPECT_EQ(call.actions, (QStringList{"default", "", "open-file", "Open"}));
    EXPECT_EQ(call.hints.value("desktop-entry").toString(), "glimpso");
    EXPECT_TRUE(call.hints.value("suppress-sound").toBool());
    EXPECT_FALSE(call.hints.contains("sound-name"));
    EXPECT_EQ(call.timeout, -1);
}

TEST_F(DBusNotificationBackendTest, TheSoundGoesAsTheSoundNameHint)
{
    startServer();
    send({"Copied", "a.png", {}, true});
    ASSERT_EQ(server.calls.size(), 1);
    EXPECT_EQ(server.calls[0].hints.value("sound-name").toString(), "message-new-instant");
    EXPECT_FALSE(server.calls[0].hints.contains("suppress-sound"));
}

TEST_F(DBusNotificationBackendTest, WithoutAServerNothingIsSent)
{
    const auto result = send({"Copied", "a.png", {}, false});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, NotificationBackend::SendResult::Status::noServer);
    EXPECT_TRUE(result->detail.contains("ServiceUnknown")) << qPrintable(result->detail);
}

TEST_F(DBusNotificationBackendTest, ARefusalIsAFailure)
{
    startServer();
    server.refuse = true;
    const auto result = send({"Copied", "a.png", {}, false});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, NotificationBackend::SendResult::Status::failed);
    EXPECT_TRUE(result->detail.contains("not today")) << qPrintable(result->detail);
}

TEST_F(DBusNotificationBackendTest, ClicksAndClosesOfTheServerComeBack)
{
    startServer();
    QList<QPair<unsigned, QString>> clicks;
    QList<unsigned> closes;
    backend->onClicked = [&](unsigned id, const QString &key) { clicks.append({id, key}); };
    backend->onClosed = [&](unsigned id) { closes.append(id); };
    send({"Copied", "a.png", {{"default", ""}}, false});

    emitSignal("ActionInvoked", {uint(41), QStringLiteral("open-file")});
    emitSignal("NotificationClosed", {uint(41), uint(2)});

    ASSERT_TRUE(processEventsUntil([&] { return !closes.isEmpty(); }));
    EXPECT_EQ(clicks, (QList<QPair<unsigned, QString>>{{41u, "open-file"}}));
    EXPECT_EQ(closes, QList<unsigned>{41u});
}

TEST(DBusNotificationBackendErrors, WhichErrorsMeanNoServer)
{
    EXPECT_TRUE(DBusNotificationBackend::meansNoServer("org.freedesktop.DBus.Error.ServiceUnknown"));
    EXPECT_TRUE(DBusNotificationBackend::meansNoServer("org.freedesktop.DBus.Error.NameHasNoOwner"));
    EXPECT_TRUE(DBusNotificationBackend::meansNoServer("org.freedesktop.DBus.Error.Spawn.ChildExited"));
    EXPECT_FALSE(DBusNotificationBackend::meansNoServer("org.freedesktop.DBus.Error.AccessDenied"));
    EXPECT_FALSE(DBusNotificationBackend::meansNoServer("org.freedesktop.DBus.Error.NoReply"));
}

} // namespace

#include "DBusNotificationBackendTest.moc"
