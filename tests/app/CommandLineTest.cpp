#include "app/CommandLine.h"

#include <QDir>

#include <gtest/gtest.h>

namespace {

using Kind = CommandLine::Invocation::Kind;

TEST(CommandLine, NoArgumentsStartsTheApplication)
{
    EXPECT_EQ(CommandLine::parse({}).kind, Kind::startApplication);
}

TEST(CommandLine, KnownVerbIsSentWithItsArguments)
{
    const auto invocation = CommandLine::parse({"settings-path"});
    EXPECT_EQ(invocation.kind, Kind::sendVerb);
    EXPECT_EQ(invocation.arguments, QStringList{"settings-path"});
}

TEST(CommandLine, UnknownVerbIsAUsageError)
{
    const auto invocation = CommandLine::parse({"frobnicate"});
    EXPECT_EQ(invocation.kind, Kind::usageError);
    EXPECT_EQ(invocation.error, "glimpso: unknown command 'frobnicate'");
}

TEST(CommandLine, UnknownOptionIsAUsageError)
{
    const auto invocation = CommandLine::parse({"--frob"});
    EXPECT_EQ(invocation.kind, Kind::usageError);
    EXPECT_EQ(invocation.error, "glimpso: unknown option '--frob'");
}

TEST(CommandLine, ExtraArgumentsAreAUsageError)
{
    const auto invocation = CommandLine::parse({"quit", "now"});
    EXPECT_EQ(invocation.kind, Kind::usageError);
    EXPECT_EQ(invocation.error, "glimpso: usage: glimpso quit");
}

TEST(CommandLine, HelpAndVersion)
{
    EXPECT_EQ(CommandLine::parse({"--help"}).kind, Kind::showHelp);
    EXPECT_EQ(CommandLine::parse({"-h"}).kind, Kind::showHelp);
    EXPECT_EQ(CommandLine::parse({"--version"}).kind, Kind::showVersion);
    EXPECT_EQ(CommandLine::versionText(), QStringLiteral("glimpso " GLIMPSO_VERSION));
}

TEST(CommandLine, UsageListsEveryVerb)
{
    const QString usage = CommandLine::usage();
    for (const CommandLine::Verb &verb : CommandLine::verbs())
        EXPECT_TRUE(usage.contains(QLatin1String(verb.name))) << verb.name;
}

TEST(CommandLine, HistoryListRunsInThisProcess)
{
    const auto invocation = CommandLine::parse({"history", "--list", "--json"});
    EXPECT_EQ(invocation.kind, Kind::runInProcess);
    EXPECT_EQ(invocation.arguments, (QStringList{"history", "--list", "--json"}));
}

TEST(CommandLine, HistoryAloneGoesToTheRunningCopyToShowThePanel)
{
    const auto invocation = CommandLine::parse({"history"});
    EXPECT_EQ(invocation.kind, Kind::sendVerb);
    EXPECT_TRUE(CommandLine::findVerb("history")->startsApplication);
}

TEST(CommandLine, HistoryWithAnotherOptionGoesToTheRunningCopy)
{
    EXPECT_EQ(CommandLine::parse({"history", "--json"}).kind, Kind::sendVerb);
    EXPECT_EQ(CommandLine::parse({"history", "--list", "--json", "x"}).kind, Kind::usageError);
}

TEST(CommandLine, EveryTrayActionIsAVerb)
{
    for (const char *name : {"region", "all", "text", "window", "delay", "gif", "video", "stop", "history", "settings",
                             "open-folder", "edit-mode", "updates", "report", "quit"})
        EXPECT_NE(CommandLine::findVerb(QString::fromLatin1(name)), nullptr) << name;
}

TEST(CommandLine, DelayTakesItsSeconds)
{
    const auto invocation = CommandLine::parse({"delay", "5"});
    EXPECT_EQ(invocation.kind, Kind::sendVerb);
    EXPECT_EQ(invocation.arguments, (QStringList{"delay", "5"}));
    EXPECT_EQ(CommandLine::parse({"delay"}).error, "glimpso: usage: glimpso delay N");
}

TEST(CommandLine, OnlyHistoryCloudCredentialsAndOcrRunInProcess)
{
    for (const CommandLine::Verb &verb : CommandLine::verbs())
        EXPECT_EQ(verb.runsInProcess, QLatin1String(verb.name) == u"history" ||
                                          QLatin1String(verb.name) == u"cloud-credentials" ||
                                          QLatin1String(verb.name) == u"ocr")
            << verb.name;
}

TEST(CommandLine, OcrReadsAFileWithoutARunningCopy)
{
    const auto invocation = CommandLine::parse({"ocr", "shot.png", "--json"});
    EXPECT_EQ(invocation.kind, Kind::runInProcess);
    EXPECT_FALSE(CommandLine::findVerb("ocr")->startsApplication);
    EXPECT_EQ(CommandLine::parse({"ocr"}).error, "glimpso: usage: glimpso ocr FILE [--json]");
}

TEST(CommandLine, QuitDoesNotStartACopyButOtherVerbsDo)
{
    EXPECT_FALSE(CommandLine::findVerb("quit")->startsApplication);
    EXPECT_TRUE(CommandLine::findVerb("settings-path")->startsApplication);
}

} // namespace

namespace {

TEST(CommandLine, UploadSendsTheFileAsAnAbsolutePath)
{
    const auto invocation = CommandLine::parse({"upload", "shots/a b.png"});
    EXPECT_EQ(invocation.kind, Kind::sendVerb);
    ASSERT_EQ(invocation.arguments.size(), 2);
    EXPECT_EQ(invocation.arguments.at(1), QDir::current().absoluteFilePath("shots/a b.png"));
    EXPECT_EQ(CommandLine::parse({"upload", "/tmp/x.png"}).arguments.at(1), "/tmp/x.png");
}

TEST(CommandLine, UploadTakesExactlyOneFile)
{
    EXPECT_EQ(CommandLine::parse({"upload"}).error, "glimpso: usage: glimpso upload FILE");
    EXPECT_EQ(CommandLine::parse({"upload", "a", "b"}).kind, Kind::usageError);
}

TEST(CommandLine, UploadWaitsForTheLinkLongerThanOtherVerbs)
{
    EXPECT_GE(CommandLine::findVerb("upload")->answerTimeoutMs, 3600 * 1000);
    EXPECT_TRUE(CommandLine::findVerb("upload")->startsApplication);
}

TEST(CommandLine, CloudCredentialsRunInThisProcessAndTakeNoArguments)
{
    EXPECT_EQ(CommandLine::parse({"cloud-credentials"}).kind, Kind::runInProcess);
    // The secret is never an argument.
    EXPECT_EQ(CommandLine::parse({"cloud-credentials", "key", "secret"}).kind, Kind::usageError);
}

} // namespace
