#include "history/HistoryItem.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTimeZone>
#include <gtest/gtest.h>

namespace {

QJsonObject parse(const char *json)
{
    return QJsonDocument::fromJson(json).object();
}

HistoryItem fileItem()
{
    HistoryItem item;
    item.id = QStringLiteral("/home/u/Pictures/Screenshots/glimpso-2026-01-02-030405.png");
    item.path = item.id;
    item.date = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5, 250), QTimeZone::utc());
    item.kind = CaptureKind::image;
    item.pixelWidth = 1280;
    item.pixelHeight = 800;
    return item;
}

TEST(HistoryItem, DateCountsSecondsFromTheFirstOf2001Utc)
{
    EXPECT_DOUBLE_EQ(HistoryItem::secondsSinceReferenceDate(QDateTime(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc())), 0);
    EXPECT_DOUBLE_EQ(HistoryItem::secondsSinceReferenceDate(QDateTime(QDate(2001, 1, 2), QTime(0, 0, 1, 500), QTimeZone::utc())),
                     86401.5);
    // The Unix epoch lies 978307200 s before the reference date.
    EXPECT_DOUBLE_EQ(HistoryItem::secondsSinceReferenceDate(QDateTime::fromSecsSinceEpoch(0, QTimeZone::utc())),
                     -978307200.0);
}

TEST(HistoryItem, FileItemHasEveryKeyButText)
{
    const QJsonObject json = fileItem().toJson();
    QStringList keys = json.keys();
    keys.sort();
    EXPECT_EQ(keys, (QStringList{"date", "id", "kind", "path", "pixelHeight", "pixelWidth", "seconds"}));
    EXPECT_EQ(json["kind"].toString(), "image");
    EXPECT_EQ(json["pixelWidth"].toInteger(), 1280);
    EXPECT_DOUBLE_EQ(json["date"].toDouble(), 789015845.25);
    EXPECT_TRUE(json["seconds"].isDouble());
}

TEST(HistoryItem, TextItemHasTextAndNoPath)
{
    HistoryItem item;
    item.id = QStringLiteral("6F1C2B1E-0000-4000-8000-000000000001");
    item.date = QDateTime(QDate(2030, 5, 6), QTime(7, 8, 9), QTimeZone::utc());
    item.kind = CaptureKind::text;
    item.text = QStringLiteral("hello\nworld");
    const QJsonObject json = item.toJson();
    EXPECT_FALSE(json.contains("path"));
    EXPECT_EQ(json["text"].toString(), "hello\nworld");
    EXPECT_EQ(json["kind"].toString(), "text");
}

TEST(HistoryItem, RoundTripsThroughJson)
{
    HistoryItem video = fileItem();
    video.kind = CaptureKind::video;
    video.seconds = 12.375;
    for (const HistoryItem &item : {fileItem(), video}) {
        const auto back = HistoryItem::fromJson(item.toJson());
        ASSERT_TRUE(back);
        EXPECT_EQ(*back, item);
    }
}

TEST(HistoryItem, IdDateAndKindAreRequired)
{
    EXPECT_TRUE(HistoryItem::fromJson(parse(R"({"id":"a","date":1,"kind":"gif"})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"date":1,"kind":"gif"})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","kind":"gif"})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","date":1})")));
}

TEST(HistoryItem, MissingOptionalKeysReadAsAbsentOrZero)
{
    const auto item = HistoryItem::fromJson(parse(R"({"id":"a","date":-2.5,"kind":"video"})"));
    ASSERT_TRUE(item);
    EXPECT_EQ(item->id, "a");
    EXPECT_EQ(item->kind, CaptureKind::video);
    EXPECT_EQ(item->date, HistoryItem::referenceDate().addMSecs(-2500));
    EXPECT_FALSE(item->path);
    EXPECT_FALSE(item->text);
    EXPECT_EQ(item->pixelWidth, 0);
    EXPECT_EQ(item->pixelHeight, 0);
    EXPECT_EQ(item->seconds, 0);
}

TEST(HistoryItem, KeysOfTheWrongTypeFailTheItem)
{
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":7,"date":1,"kind":"gif"})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","date":"2026-01-01","kind":"gif"})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","date":1,"kind":"sound"})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","date":1,"kind":"gif","path":3})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","date":1,"kind":"gif","pixelWidth":1.5})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","date":1,"kind":"gif","pixelHeight":"2"})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","date":1,"kind":"gif","seconds":true})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","date":1e300,"kind":"gif"})")));
    EXPECT_FALSE(HistoryItem::fromJson(parse(R"({"id":"a","date":1,"kind":"gif","seconds":1e400})")));
    EXPECT_TRUE(HistoryItem::fromJson(parse(R"({"id":"a","date":1,"kind":"gif","pixelWidth":3.0,"path":null})")));
}

TEST(HistoryItem, ListSkipsTheBadElementAndKeepsTheGoodOnes)
{
    const QList<HistoryItem> items = HistoryItem::decodeList(
        R"([{"id":"a","date":1,"kind":"text","text":"one"}, {"id":"b","date":"x","kind":"text"}, 5, [],
            {"id":"c","date":2,"kind":"text","text":"two"}])");
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0].text, "one");
    EXPECT_EQ(items[1].text, "two");
}

TEST(HistoryItem, AnythingButAnArrayReadsAsEmpty)
{
    EXPECT_TRUE(HistoryItem::decodeList("").isEmpty());
    EXPECT_TRUE(HistoryItem::decodeList("not json").isEmpty());
    EXPECT_TRUE(HistoryItem::decodeList(R"({"id":"a","date":1,"kind":"text"})").isEmpty());
    EXPECT_TRUE(HistoryItem::decodeList(R"([{"id":"a","date":1,"kind":"text"})").isEmpty()); // truncated
}

TEST(HistoryItem, EncodedListIsOneCompactArray)
{
    const QByteArray bytes = HistoryItem::encodeList({fileItem()});
    EXPECT_FALSE(bytes.contains('\n'));
    EXPECT_TRUE(bytes.startsWith("[{"));
    EXPECT_EQ(HistoryItem::decodeList(bytes), QList<HistoryItem>{fileItem()});
}

} // namespace
