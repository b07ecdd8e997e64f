#include "history/OldHistoryItem.h"

#include "history/HistoryItem.h"

#include <gtest/gtest.h>

namespace {

TEST(OldHistoryItem, ReadsEveryKey)
{
    const auto items = OldHistoryItem::decodeList(
        R"([{"date":10.5,"kind":"image","fileName":"a.png","savedPath":"/x/a.png"},{"date":11,"kind":"text","text":"hi"}])");
    ASSERT_TRUE(items);
    ASSERT_EQ(items->size(), 2);
    EXPECT_EQ((*items)[0].date, HistoryItem::referenceDate().addMSecs(10500));
    EXPECT_EQ((*items)[0].kind, "image");
    EXPECT_EQ((*items)[0].fileName, "a.png");
    EXPECT_EQ((*items)[0].savedPath, "/x/a.png");
    EXPECT_FALSE((*items)[0].text);
    EXPECT_EQ((*items)[1].text, "hi");
    EXPECT_FALSE((*items)[1].fileName);
}

TEST(OldHistoryItem, OneBadElementFailsTheWholeIndex)
{
    EXPECT_FALSE(OldHistoryItem::decodeList(R"([{"date":1,"kind":"image"},{"kind":"image"}])"));
    EXPECT_FALSE(OldHistoryItem::decodeList(R"([{"date":1,"kind":"image"},3])"));
    EXPECT_FALSE(OldHistoryItem::decodeList(R"([{"date":1,"kind":2}])"));
    EXPECT_FALSE(OldHistoryItem::decodeList(R"([{"date":1,"kind":"image","fileName":false}])"));
}

TEST(OldHistoryItem, NotAnArrayFails)
{
    EXPECT_FALSE(OldHistoryItem::decodeList(""));
    EXPECT_FALSE(OldHistoryItem::decodeList("{}"));
    EXPECT_FALSE(OldHistoryItem::decodeList("[{\"date\":1,"));
    ASSERT_TRUE(OldHistoryItem::decodeList("[]"));
    EXPECT_TRUE(OldHistoryItem::decodeList("[]")->isEmpty());
}

} // namespace
