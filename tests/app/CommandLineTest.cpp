#include "app/CommandLine.h"

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

TEST(CommandLine, OnlyHistoryAndOcrRunInProcess)
{
    for (const CommandLine::Verb &verb : CommandLine::verbs())
        EXPECT_EQ(verb.runsInProcess, QLatin1String(verb.name) == u"history" || QLatin1String(verb.name) == u"ocr")
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
