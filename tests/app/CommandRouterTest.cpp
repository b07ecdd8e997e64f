#include "app/CommandRouter.h"

#include <gtest/gtest.h>

namespace {

TEST(CommandRouter, PassesTheArgumentsAfterTheVerb)
{
    CommandRouter router;
    QStringList seen;
    router.add("delay", [&](const QStringList &arguments) {
        seen = arguments;
        return CommandRouter::Reply{0, "ok", {}};
    });
    const auto reply = router.handle({"delay", "3"});
    EXPECT_EQ(seen, QStringList{"3"});
    EXPECT_EQ(reply.output, "ok");
    EXPECT_TRUE(router.handles("delay"));
}

TEST(CommandRouter, UnknownVerbAnswersStatusTwo)
{
    CommandRouter router;
    const auto reply = router.handle({"teleport"});
    EXPECT_EQ(reply.status, 2);
    EXPECT_EQ(reply.error, "glimpso: the running copy does not know 'teleport'");
}

TEST(CommandRouter, EmptyCommandAnswersStatusTwo)
{
    EXPECT_EQ(CommandRouter().handle({}).status, 2);
}

} // namespace
