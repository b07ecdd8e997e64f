#include "platform/dbus/KeychainStore.h"

#include "PrivateBus.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using Outcome = CredentialKeychain::ReadResult::Outcome;

// A real GNOME keyring, unlocked with a password of the test's, on a session
// bus of the test's own that starts nothing on demand (so no prompt can come
// up: a locked keyring stays locked). Items are stored with secret-tool, as
// an older version's would be found.
class KeyringDesktop
{
public:
    KeyringDesktop()
    {
        if (!m_bus.isUp())
            return;
        const QByteArray home = m_home.path().toUtf8();
        qputenv("HOME", home);
        qputenv("XDG_DATA_HOME", home + "/.local/share");
        qputenv("XDG_RUNTIME_DIR", home);
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
        m_connection = std::make_unique<QDBusConnection>(m_bus.connect(QStringLiteral("keyring-test")));
    }
    ~KeyringDesktop()
    {
        if (m_daemon.state() != QProcess::NotRunning) {
            m_daemon.terminate();
            m_daemon.waitForFinished(5000);
        }
    }

    bool busUp() const { return m_bus.isUp(); }

    // The daemon, unlocked; false when it can't be had here.
    bool startKeyring()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("gnome-keyring-daemon")).isEmpty()) {
            m_failure = QStringLiteral("it is not installed");
            return false;
        }
        m_daemon.start(QStringLiteral("gnome-keyring-daemon"),
                       {QStringLiteral("--unlock"), QStringLiteral("--components=secrets"), QStringLiteral("--foreground")});
        if (!m_daemon.waitForStarted(5000))
            return false;
        m_daemon.write("keyring-password");
        m_daemon.waitForBytesWritten(5000);
        m_daemon.closeWriteChannel();
        const QDeadlineTimer deadline(20000);
        while (!deadline.hasExpired()) {
            if (m_connection->interface()->isServiceRegistered(QStringLiteral("org.freedesktop.secrets")))
                return true;
            QThread::msleep(50);
        }
        m_failure = QStringLiteral("state %1, exit %2: ").arg(int(m_daemon.state())).arg(m_daemon.exitCode())
            + QString::fromUtf8(m_daemon.readAllStandardError() + m_daemon.readAllStandardOutput());
        return false;
    }
    const QString &failure() const { return m_failure; }

    static bool store(const QString &account, const QByteArray &secret)
    {
        QProcess tool;
        tool.start(QStringLiteral("secret-tool"), {QStringLiteral("store"), QStringLiteral("--label=glimpso ") + account,
                                                    QStringLiteral("service"), QStringLiteral("com.tovarine.glimpso"),
                                                    QStringLiteral("account"), account});
        if (!tool.waitForStarted(5000))
            return false;
        tool.write(secret);
        tool.waitForBytesWritten(5000);
        tool.closeWriteChannel();
        return tool.waitForFinished(20000) && tool.exitCode() == 0;
    }

    static QString lookup(const QString &account)
    {
        QProcess tool;
        tool.start(QStringLiteral("secret-tool"), {QStringLiteral("lookup"), QStringLiteral("service"),
                                                    QStringLiteral("com.tovarine.glimpso"), QStringLiteral("account"),
                                                    account});
        tool.waitForFinished(20000);
        return QString::fromUtf8(tool.readAllStandardOutput());
    }

    // Locks the login keyring, as after a session's screen lock.
    bool lock()
    {
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
            QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("Lock"));
        call << QVariant::fromValue(QList<QDBusObjectPath>{
            QDBusObjectPath(QStringLiteral("/org/freedesktop/secrets/collection/login"))});
        return m_connection->call(call).type() == QDBusMessage::ReplyMessage;
    }

private:
    QTemporaryDir m_home;
    PrivateBus m_bus;
    std::unique_ptr<QDBusConnection> m_connection;
    QProcess m_daemon;
    QString m_failure;
};

struct KeychainStoreTest : ::testing::Test {
    KeyringDesktop desktop;
    KeychainStore keychain;

    void SetUp() override
    {
        if (!desktop.busUp())
            GTEST_SKIP() << "dbus-daemon is not installed";
    }
};

// gnome-keyring is a test dependency (scripts/deps/test-cloud.txt): its
// absence, or a daemon that does not come up, fails the test.
#define START_KEYRING()                                                                                             \
    ASSERT_TRUE(desktop.startKeyring()) << "gnome-keyring-daemon did not start: " << qPrintable(desktop.failure())

TEST_F(KeychainStoreTest, WithoutASecretServiceThereIsNothingToMove)
{
    EXPECT_FALSE(keychain.exists(CredentialKeychain::accessKeyAccount));
    EXPECT_EQ(keychain.read(CredentialKeychain::accessKeyAccount).outcome, Outcome::missing);
    EXPECT_TRUE(keychain.remove(CredentialKeychain::accessKeyAccount));
}

TEST_F(KeychainStoreTest, AnEmptyKeyringHasNoItems)
{
    START_KEYRING();
    EXPECT_FALSE(keychain.exists(CredentialKeychain::accessKeyAccount));
    EXPECT_EQ(keychain.read(CredentialKeychain::secretAccount).outcome, Outcome::missing);
    EXPECT_TRUE(keychain.remove(CredentialKeychain::secretAccount));
}

TEST_F(KeychainStoreTest, ItemsStoredBySecretToolAreFoundReadAndDeleted)
{
    START_KEYRING();
    ASSERT_TRUE(KeyringDesktop::store(CredentialKeychain::accessKeyAccount, "AKIAOLDKEY"));
    ASSERT_TRUE(KeyringDesktop::store(CredentialKeychain::secretAccount, "old/secret+ünï"));
    EXPECT_TRUE(keychain.exists(CredentialKeychain::accessKeyAccount));
    EXPECT_TRUE(keychain.exists(CredentialKeychain::secretAccount));
    const auto secret = keychain.read(CredentialKeychain::secretAccount);
    EXPECT_EQ(secret.outcome, Outcome::found);
    EXPECT_EQ(secret.text, QStringLiteral("old/secret+ünï"));

    EXPECT_TRUE(keychain.remove(CredentialKeychain::accessKeyAccount));
    EXPECT_FALSE(keychain.exists(CredentialKeychain::accessKeyAccount));
    EXPECT_TRUE(KeyringDesktop::lookup(CredentialKeychain::accessKeyAccount).isEmpty());
    EXPECT_TRUE(keychain.exists(CredentialKeychain::secretAccount));
}

TEST_F(KeychainStoreTest, ASecretThatIsNotUtf8CountsAsMissing)
{
    START_KEYRING();
    ASSERT_TRUE(KeyringDesktop::store(CredentialKeychain::accessKeyAccount, QByteArray("\xff\xfe\x80", 3)));
    EXPECT_TRUE(keychain.exists(CredentialKeychain::accessKeyAccount));
    EXPECT_EQ(keychain.read(CredentialKeychain::accessKeyAccount).outcome, Outcome::missing);
}

TEST_F(KeychainStoreTest, ALockedKeyringIsSeenWithoutAPromptAndRefusesItsSecret)
{
    START_KEYRING();
    ASSERT_TRUE(KeyringDesktop::store(CredentialKeychain::accessKeyAccount, "AKIAOLDKEY"));
    ASSERT_TRUE(desktop.lock());
    EXPECT_TRUE(keychain.exists(CredentialKeychain::accessKeyAccount));
    EXPECT_EQ(keychain.read(CredentialKeychain::accessKeyAccount).outcome, Outcome::denied);
}

} // namespace
