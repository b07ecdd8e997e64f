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
    EXPECT_FALSE(CommandLine::findVerb("history")->startsApplication);
}

TEST(CommandLine, HistoryNeedsItsOption)
{
    const auto invocation = CommandLine::parse({"history"});
    EXPECT_EQ(invocation.kind, Kind::usageError);
    EXPECT_EQ(invocation.error, "glimpso: usage: glimpso history --list [--json]");
}

TEST(CommandLine, OnlyHistoryRunsInProcess)
{
    for (const CommandLine::Verb &verb : CommandLine::verbs())
        EXPECT_EQ(verb.runsInProcess, QLatin1String(verb.name) == u"history") << verb.name;
}

TEST(CommandLine, QuitDoesNotStartACopyButOtherVerbsDo)
{
    EXPECT_FALSE(CommandLine::findVerb("quit")->startsApplication);
    EXPECT_TRUE(CommandLine::findVerb("settings-path")->startsApplication);
}

} // namespace
