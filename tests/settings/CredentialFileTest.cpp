#include "settings/CredentialFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

struct CredentialFileTest : ::testing::Test {
    QTemporaryDir home;
    QString folder = home.filePath(QStringLiteral("data/glimpso"));
    CredentialFile file{folder + QStringLiteral("/cloud-credentials.json")};

    QByteArray contents() const
    {
        QFile f(file.path());
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    static unsigned mode(const QString &path)
    {
        struct stat info{};
        return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode & 0777 : 0;
    }
};

TEST_F(CredentialFileTest, SavesBothKeysAsOneJsonObject)
{
    ASSERT_TRUE(file.save({QStringLiteral("test:tester"), QStringLiteral("s3cr3t")}));
    EXPECT_EQ(contents(), QByteArray(R"({"accessKeyID":"test:tester","secretAccessKey":"s3cr3t"})"));
}

TEST_F(CredentialFileTest, ReadsBackWhatItSaved)
{
    const CredentialFile::Credentials credentials{QStringLiteral("AKIA ünï"), QStringLiteral(" with blanks ")};
    ASSERT_TRUE(file.save(credentials));
    EXPECT_EQ(file.read(), credentials);
}

TEST_F(CredentialFileTest, FileIsTheOwnersOnlyInAFolderOnlyTheOwnerEnters)
{
    // The folder may have been made by someone else before, with wider rights.
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                                  | QFileDevice::ExeOwner | QFileDevice::ReadOther
                                                  | QFileDevice::ExeOther));
    ASSERT_TRUE(file.save({QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(mode(file.path()), 0600u);
    EXPECT_EQ(mode(folder), 0700u);
}

TEST_F(CredentialFileTest, ReplacingLeavesNoTemporaryFileBehind)
{
    ASSERT_TRUE(file.save({QStringLiteral("a"), QStringLiteral("b")}));
    ASSERT_TRUE(file.save({QStringLiteral("c"), QStringLiteral("d")}));
    EXPECT_EQ(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("cloud-credentials.json")});
    EXPECT_EQ(file.read()->accessKeyID, QStringLiteral("c"));
}

TEST_F(CredentialFileTest, MissingFileReadsAsNothing)
{
    EXPECT_FALSE(file.read().has_value());
}

TEST_F(CredentialFileTest, WhatDoesNotDecodeReadsAsNothing)
{
    EXPECT_FALSE(CredentialFile::decode("").has_value());
    EXPECT_FALSE(CredentialFile::decode("{not json").has_value());
    EXPECT_FALSE(CredentialFile::decode(R"(["a","b"])").has_value());
    EXPECT_FALSE(CredentialFile::decode(R"({"accessKeyID":"a"})").has_value());
    EXPECT_FALSE(CredentialFile::decode(R"({"accessKeyID":"a","secretAccessKey":7})").has_value());
    EXPECT_FALSE(CredentialFile::decode(R"({"accessKeyID":null,"secretAccessKey":"b"})").has_value());
}

TEST_F(CredentialFileTest, OtherKeysBesideTheTwoAreIgnored)
{
    const auto read = CredentialFile::decode(R"({"accessKeyID":"a","secretAccessKey":"b","note":1})");
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->secretAccessKey, QStringLiteral("b"));
}

TEST_F(CredentialFileTest, AFailedSaveAnswersFalseAndThrowsNothing)
{
    // The folder's place is taken by a file.
    ASSERT_TRUE(QDir().mkpath(home.filePath(QStringLiteral("data"))));
    QFile blocker(folder);
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    EXPECT_FALSE(file.save({QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_FALSE(file.read().has_value());
}

TEST_F(CredentialFileTest, RemovingIsQuietAlsoWithoutAFile)
{
    file.remove();
    ASSERT_TRUE(file.save({QStringLiteral("a"), QStringLiteral("b")}));
    file.remove();
    EXPECT_FALSE(QFileInfo::exists(file.path()));
}

TEST(CredentialFilePath, LiesInGlimpsosDataFolder)
{
    EXPECT_TRUE(CredentialFile::defaultPath().endsWith(QStringLiteral("/glimpso/cloud-credentials.json")));
}

} // namespace
