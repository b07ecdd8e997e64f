#include "settings/AppSettings.h"
#include "settings/CloudCredentials.h"

#include "CloudFakes.h"
#include "SettingsFakes.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>


namespace {

using ReadResult = CredentialKeychain::ReadResult;

struct CloudCredentialsTest : ::testing::Test {
    QTemporaryDir home;
    CredentialFile file{home.filePath(QStringLiteral("glimpso/cloud-credentials.json"))};
    FakeKeychain keychain;
    CloudCredentials credentials{file, keychain};

    void writeFile(const QByteArray &bytes) const
    {
        QDir().mkpath(home.filePath(QStringLiteral("glimpso")));
        QFile f(file.path());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
};

TEST_F(CloudCredentialsTest, NothingIsReadBeforeTheFirstNeed)
{
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings(storage, login);
    settings.useCredentialStores(file, keychain);
    file.save({QStringLiteral("a"), QStringLiteral("b")});
    EXPECT_FALSE(settings.cloudCredentialsLoaded());
    EXPECT_TRUE(settings.cloudAccessKeyID().isEmpty());
    EXPECT_EQ(keychain.calls(), 0);
    EXPECT_TRUE(settings.loadCloudCredentials());
    EXPECT_EQ(settings.cloudAccessKeyID(), QStringLiteral("a"));
    EXPECT_EQ(settings.cloudSecretAccessKey(), QStringLiteral("b"));
}

TEST_F(CloudCredentialsTest, AValidFileMeansTheKeyringIsNeverAsked)
{
    keychain.items[CredentialKeychain::accessKeyAccount] = ReadResult::found(QStringLiteral("old"));
    file.save({QStringLiteral("key"), QStringLiteral("secret")});
    EXPECT_TRUE(credentials.load());
    EXPECT_EQ(credentials.accessKeyID(), QStringLiteral("key"));
    EXPECT_EQ(keychain.calls(), 0);
    EXPECT_TRUE(credentials.loaded());
    EXPECT_FALSE(credentials.denied());
}

TEST_F(CloudCredentialsTest, ACorruptFileAndAnEmptyKeyringGiveEmptyCredentials)
{
    writeFile("{\"accessKeyID\": ");
    EXPECT_TRUE(credentials.load());
    EXPECT_TRUE(credentials.loaded());
    EXPECT_TRUE(credentials.accessKeyID().isEmpty());
    EXPECT_TRUE(credentials.secretAccessKey().isEmpty());
    EXPECT_EQ(keychain.readCalls, 0);
}

TEST_F(CloudCredentialsTest, OnlyTheAccessKeyInTheKeyringMovesWithAnEmptySecret)
{
    keychain.items[CredentialKeychain::accessKeyAccount] = ReadResult::found(QStringLiteral("old-key"));
    EXPECT_TRUE(credentials.load());
    EXPECT_EQ(file.read(), (CredentialFile::Credentials{QStringLiteral("old-key"), QString()}));
    EXPECT_EQ(keychain.removed,
              (QStringList{CredentialKeychain::accessKeyAccount, CredentialKeychain::secretAccount}));
    EXPECT_EQ(credentials.accessKeyID(), QStringLiteral("old-key"));
}

TEST_F(CloudCredentialsTest, OneDeniedReadWritesAndDeletesNothingAndTheNextCallAsksAgain)
{
    keychain.items[CredentialKeychain::accessKeyAccount] = ReadResult::found(QStringLiteral("old-key"));
    keychain.items[CredentialKeychain::secretAccount] = ReadResult::denied();
    EXPECT_FALSE(credentials.load());
    EXPECT_FALSE(credentials.loaded());
    EXPECT_TRUE(credentials.denied());
    EXPECT_FALSE(QFileInfo::exists(file.path()));
    EXPECT_TRUE(keychain.removed.isEmpty());
    EXPECT_EQ(keychain.readCalls, 2);

    keychain.items[CredentialKeychain::secretAccount] = ReadResult::found(QStringLiteral("old-secret"));
    EXPECT_TRUE(credentials.load());
    EXPECT_EQ(keychain.readCalls, 4);
    EXPECT_TRUE(credentials.loaded());
    EXPECT_FALSE(credentials.denied());
    EXPECT_EQ(file.read(), (CredentialFile::Credentials{QStringLiteral("old-key"), QStringLiteral("old-secret")}));
}

TEST_F(CloudCredentialsTest, ARefusedFirstReadDoesNotAskASecondTime)
{
    keychain.items[CredentialKeychain::accessKeyAccount] = ReadResult::denied();
    keychain.items[CredentialKeychain::secretAccount] = ReadResult::found(QStringLiteral("s"));
    EXPECT_FALSE(credentials.load());
    EXPECT_EQ(keychain.readCalls, 1);
    EXPECT_TRUE(credentials.denied());
}

TEST_F(CloudCredentialsTest, AFailedKeyringReadCountsAsEmpty)
{
    keychain.items[CredentialKeychain::accessKeyAccount] = ReadResult::failed(3);
    keychain.items[CredentialKeychain::secretAccount] = ReadResult::found(QStringLiteral("s"));
    EXPECT_TRUE(credentials.load());
    EXPECT_EQ(file.read(), (CredentialFile::Credentials{QString(), QStringLiteral("s")}));
}

TEST_F(CloudCredentialsTest, TheMigrationHappensOnce)
{
    keychain.items[CredentialKeychain::accessKeyAccount] = ReadResult::found(QStringLiteral("k"));
    keychain.items[CredentialKeychain::secretAccount] = ReadResult::found(QStringLiteral("s"));
    EXPECT_TRUE(credentials.load());
    EXPECT_TRUE(keychain.items.empty());
    const int calls = keychain.calls();
    EXPECT_TRUE(credentials.load());
    EXPECT_EQ(keychain.calls(), calls);

    // A later run finds the file and leaves the keyring alone.
    CloudCredentials nextRun(file, keychain);
    EXPECT_TRUE(nextRun.load());
    EXPECT_EQ(nextRun.secretAccessKey(), QStringLiteral("s"));
    EXPECT_EQ(keychain.calls(), calls);
}

TEST_F(CloudCredentialsTest, AFailedSaveKeepsThemInMemoryAndInTheKeyring)
{
    // The folder's place is taken by a file, so nothing can be saved.
    QFile blocker(home.filePath(QStringLiteral("glimpso")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    keychain.items[CredentialKeychain::accessKeyAccount] = ReadResult::found(QStringLiteral("k"));
    keychain.items[CredentialKeychain::secretAccount] = ReadResult::found(QStringLiteral("s"));
    EXPECT_TRUE(credentials.load());
    EXPECT_TRUE(credentials.loaded());
    EXPECT_EQ(credentials.accessKeyID(), QStringLiteral("k"));
    EXPECT_EQ(credentials.secretAccessKey(), QStringLiteral("s"));
    EXPECT_TRUE(keychain.removed.isEmpty());
}

TEST_F(CloudCredentialsTest, AnAssignmentBeforeTheFirstLoadWritesNothing)
{
    file.save({QStringLiteral("k"), QStringLiteral("s")});
    credentials.setAccessKeyID(QString());
    credentials.setSecretAccessKey(QString());
    EXPECT_EQ(file.read(), (CredentialFile::Credentials{QStringLiteral("k"), QStringLiteral("s")}));
}

TEST_F(CloudCredentialsTest, ClearingBothFieldsDeletesTheFileAndClearingOneKeepsIt)
{
    ASSERT_TRUE(credentials.load());
    credentials.setAccessKeyID(QStringLiteral(" key "));
    credentials.setSecretAccessKey(QStringLiteral("secret"));
    // Kept as they stand, untrimmed.
    EXPECT_EQ(file.read(), (CredentialFile::Credentials{QStringLiteral(" key "), QStringLiteral("secret")}));
    credentials.setAccessKeyID(QString());
    EXPECT_EQ(file.read(), (CredentialFile::Credentials{QString(), QStringLiteral("secret")}));
    credentials.setSecretAccessKey(QString());
    EXPECT_FALSE(QFileInfo::exists(file.path()));
}

TEST_F(CloudCredentialsTest, AReloadTakesWhatAnotherProcessWrote)
{
    credentials.reload();
    EXPECT_FALSE(credentials.loaded());
    ASSERT_TRUE(credentials.load());
    CredentialFile(file.path()).save({QStringLiteral("new"), QStringLiteral("keys")});
    credentials.reload();
    EXPECT_EQ(credentials.accessKeyID(), QStringLiteral("new"));
    EXPECT_EQ(credentials.secretAccessKey(), QStringLiteral("keys"));
}

TEST_F(CloudCredentialsTest, SettingsPublishEachCredentialThatChanges)
{
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings(storage, login);
    settings.useCredentialStores(file, keychain);
    QStringList changed;
    QObject::connect(&settings, &AppSettings::changed, [&changed](const QString &key) { changed << key; });
    ASSERT_TRUE(settings.loadCloudCredentials());
    settings.setCloudAccessKeyID(QStringLiteral("k"));
    settings.setCloudAccessKeyID(QStringLiteral("k"));
    settings.setCloudSecretAccessKey(QStringLiteral("s"));
    EXPECT_EQ(changed, (QStringList{QStringLiteral("cloudAccessKeyID"), QStringLiteral("cloudSecretAccessKey")}));
    EXPECT_EQ(file.read(), (CredentialFile::Credentials{QStringLiteral("k"), QStringLiteral("s")}));
}

} // namespace
