#include "app/WindowCommand.h"

#include <gtest/gtest.h>

using Verb = WindowCommand::Verb;

TEST(WindowCommand, WithoutOptionsItIsThePicker)
{
    QString error;
    const auto verb = WindowCommand::parse({}, &error);
    ASSERT_TRUE(verb);
    EXPECT_EQ(verb->target, Verb::Target::picker);
    EXPECT_EQ(verb->output, Verb::Output::asSettings);
}

TEST(WindowCommand, UnderThePointerOrByIdWithAnOutput)
{
    QString error;
    auto verb = WindowCommand::parse({"--under-pointer", "--save"}, &error);
    ASSERT_TRUE(verb);
    EXPECT_EQ(verb->target, Verb::Target::underPointer);
    EXPECT_EQ(verb->output, Verb::Output::save);
    verb = WindowCommand::parse({"--copy", "--id", "0x1e00007"}, &error);
    ASSERT_TRUE(verb);
    EXPECT_EQ(verb->target, Verb::Target::id);
    EXPECT_EQ(verb->windowID, 0x1e00007u);
    EXPECT_EQ(verb->output, Verb::Output::copy);
    verb = WindowCommand::parse({"--id", "31457287"}, &error);
    ASSERT_TRUE(verb);
    EXPECT_EQ(verb->windowID, 31457287u);
    EXPECT_EQ(verb->output, Verb::Output::asSettings);
}

TEST(WindowCommand, NonsenseIsRefusedWithItsReason)
{
    QString error;
    EXPECT_FALSE(WindowCommand::parse({"--id"}, &error));
    EXPECT_EQ(error, "glimpso: --id needs a window id such as 0x1e00007");
    EXPECT_FALSE(WindowCommand::parse({"--id", "0xZZ"}, &error));
    EXPECT_FALSE(WindowCommand::parse({"--id", "0"}, &error));
    EXPECT_FALSE(WindowCommand::parse({"--id", "0x100000000"}, &error));
    EXPECT_FALSE(WindowCommand::parse({"--under-pointer", "--id", "0x10"}, &error));
    EXPECT_EQ(error, "glimpso: choose one of --under-pointer and --id");
    EXPECT_FALSE(WindowCommand::parse({"--under-pointer", "--copy", "--save"}, &error));
    EXPECT_EQ(error, "glimpso: choose one of --copy and --save");
    EXPECT_FALSE(WindowCommand::parse({"--save"}, &error));
    EXPECT_EQ(error, "glimpso: --copy and --save need --under-pointer or --id");
    EXPECT_FALSE(WindowCommand::parse({"--frontmost"}, &error));
    EXPECT_EQ(error, "glimpso: unknown option '--frontmost'");
}
