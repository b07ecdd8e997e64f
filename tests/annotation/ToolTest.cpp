#include "annotation/Tool.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <unordered_set>

using namespace glimpso;

TEST(Tool, ListsElevenToolsInToolbarOrder)
{
    const QStringList expected{"none", "move", "pencil", "highlight", "line", "arrow",
                               "rect", "ellipse", "text", "sequence", "mosaic"};
    QStringList names;
    for (Tool tool : allTools)
        names << toString(tool);
    EXPECT_EQ(names, expected);
}

TEST(Tool, ReadsBackEveryStoredName)
{
    for (Tool tool : allTools)
        EXPECT_EQ(toolFromString(toString(tool)), tool);
}

TEST(Tool, RejectsAnUnknownName)
{
    EXPECT_FALSE(toolFromString("Pencil").has_value());
    EXPECT_FALSE(toolFromString("").has_value());
}

TEST(Tool, IsHashable)
{
    std::unordered_set<Tool> tools(allTools.begin(), allTools.end());
    EXPECT_EQ(tools.size(), allTools.size());
}
