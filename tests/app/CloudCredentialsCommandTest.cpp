#include "app/CloudCredentialsCommand.h"

#include "FakeInstanceChannel.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using Credentials = CredentialFile::Credentials;

TEST(CloudCredentialsCommand, TakesTheFirstTwoLinesWithoutTheirEndings)
{
    EXPECT_EQ(CloudCredentialsCommand::parse("key\nsecret\n"), (Credentials{"key", "secret"}));
    EXPECT_EQ(CloudCredentialsCommand::parse("key\r\nsecret\r\n"), (Credentials{"key", "secret"}));
    EXPECT_EQ(CloudCredentialsCommand::parse("key\nsecret"), (Credentials{"key", "secret"}));
    EXPECT_EQ(CloudCredentialsCommand::parse("test:tester\n  s p a c e s \nmore\n"),
              (Credentials{"test:tester", "  s p a c e s "}));
    EXPECT_EQ(CloudCredentialsCommand::parse("\n\n"), (Credentials{"", ""}));
}

TEST(CloudCredentialsCommand, FewerThanTwoLinesAreRefused)
{
    EXPECT_FALSE(CloudCredentialsCommand::parse("").has_value());
    EXPECT_FALSE(CloudCredentialsCommand::parse("key").has_value());
    EXPECT_FALSE(CloudCredentialsCommand::parse("key\n").has_value());
}

struct CloudCredentialsCommandRun : ::testing::Test {
    QTemporaryDir home;
    CredentialFile file{home.filePath(QStringLiteral("glimpso/cloud-credentials.json"))};
    FakeInstanceChannel channel;
};

TEST_F(CloudCredentialsCommandRun, SavesTheKeysAndTellsTheRunningCopy)
{
    channel.running = {QStringLiteral("copy")};
    channel.nextReply = InstanceChannel::Reply{0, {}, {}};
    const auto outcome = CloudCredentialsCommand::run("key\nsecret\n", file, &channel);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, QStringLiteral("Saved the cloud credentials in %1\n").arg(file.path()));
    EXPECT_TRUE(outcome.error.isEmpty());
    EXPECT_EQ(file.read(), (Credentials{"key", "secret"}));
    EXPECT_EQ(channel.lastCommand, (QStringList{"cloud-credentials", "--reload"}));
}

TEST_F(CloudCredentialsCommandRun, WithoutARunningCopyOnlyTheFileIsWritten)
{
    EXPECT_EQ(CloudCredentialsCommand::run("key\nsecret\n", file, &channel).exitCode, 0);
    EXPECT_TRUE(channel.lastCommand.isEmpty());
    EXPECT_TRUE(QFileInfo::exists(file.path()));
}

TEST_F(CloudCredentialsCommandRun, TwoEmptyLinesRemoveTheKeys)
{
    file.save({"key", "secret"});
    const auto outcome = CloudCredentialsCommand::run("\n\n", file, nullptr);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_FALSE(QFileInfo::exists(file.path()));
}

TEST_F(CloudCredentialsCommandRun, OneLineIsAnErrorAndWritesNothing)
{
    const auto outcome = CloudCredentialsCommand::run("key\n", file, &channel);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, QStringLiteral("glimpso: expected two lines on standard input: the access key ID, then "
                                            "the secret access key"));
    EXPECT_FALSE(QFileInfo::exists(file.path()));
}

TEST_F(CloudCredentialsCommandRun, AFileThatCannotBeWrittenIsAnError)
{
    CredentialFile blocked(home.filePath(QStringLiteral("blocker/cloud-credentials.json")));
    QFile blocker(home.filePath(QStringLiteral("blocker")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    const auto outcome = CloudCredentialsCommand::run("key\nsecret\n", blocked, nullptr);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.error.startsWith(QStringLiteral("glimpso: the cloud credentials could not be saved")));
}

} // namespace
