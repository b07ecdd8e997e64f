#include "app/UploadCommands.h"

#include "appbase/AppError.h"
#include "cloud/UploadService.h"
#include "settings/AppSettings.h"

#include "CloudFakes.h"
#include "RecordingNotifier.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct UploadCommandsTest : ::testing::Test, CloudSettings {
    RecordingNotifier notifier;
    UploadService uploads{UploadService::Parts{settings, {}, {}, home.filePath(QStringLiteral("abandoned.json"))}};
    UploadCommands commands{uploads, settings, notifier};

    void SetUp() override
    {
        settings.cloudProvider.set(CloudProvider::none);
        file.remove();
    }

    QString tempFile(const QString &name)
    {
        const QString path = home.filePath(name);
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("bytes");
        return path;
    }
};

TEST_F(UploadCommandsTest, AFileThatIsNotThereIsSaidSo)
{
    const auto reply = commands.upload({home.filePath(QStringLiteral("gone.png"))});
    EXPECT_EQ(reply.status, 1);
    EXPECT_EQ(reply.error, QStringLiteral("glimpso: no such file: ") + home.filePath(QStringLiteral("gone.png")));
    EXPECT_TRUE(notifier.errors.isEmpty());
}

TEST_F(UploadCommandsTest, AFolderIsNotUploaded)
{
    const auto reply = commands.upload({home.path()});
    EXPECT_EQ(reply.status, 1);
    EXPECT_TRUE(reply.error.endsWith(QStringLiteral(" is a folder; upload a file")));
}

TEST_F(UploadCommandsTest, WithoutAProviderTheAnswerAndTheNoticeSaySo)
{
    const auto reply = commands.upload({tempFile(QStringLiteral("a.png"))});
    EXPECT_EQ(reply.status, 1);
    EXPECT_EQ(reply.error,
              QStringLiteral("glimpso: No upload provider configured. Set one up in Settings → Cloud."));
    ASSERT_EQ(notifier.errors.size(), 1);
    EXPECT_EQ(notifier.errors.first().kind(), AppError::Case::uploadNotConfigured);
}

TEST_F(UploadCommandsTest, AReloadTakesTheFileAnotherProcessWrote)
{
    settings.setCloudAccessKeyID(QStringLiteral("ignored before the first load"));
    ASSERT_TRUE(settings.loadCloudCredentials());
    file.save({QStringLiteral("new"), QStringLiteral("keys")});
    EXPECT_EQ(commands.cloudCredentials({QStringLiteral("--reload")}).status, 0);
    EXPECT_EQ(settings.cloudAccessKeyID(), QStringLiteral("new"));
}

TEST_F(UploadCommandsTest, TheSecretNeverComesAlongTheBus)
{
    const auto reply = commands.cloudCredentials({QStringLiteral("key"), QStringLiteral("secret")});
    EXPECT_EQ(reply.status, 2);
    EXPECT_FALSE(settings.cloudCredentialsLoaded());
}

} // namespace
