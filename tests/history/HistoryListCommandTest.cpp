#include "history/HistoryListCommand.h"

#include "settings/LoginItem.h"
#include "settings/SettingsStorage.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QTemporaryDir>
#include <QTimeZone>
#include "SettingsFakes.h"

#include <gtest/gtest.h>

namespace {

class HistoryListCommandTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    MemorySettingsStorage storage;
    InertLoginItem loginItem;
    AppSettings settings{storage, loginItem};
    QString save = dir.filePath("save");
    QString support = dir.filePath("support");
    QString cache = dir.filePath("cache/history-headers");

    void SetUp() override
    {
        QDir().mkpath(save);
        settings.setSaveDirectory(save);
    }
    QString capture(const QString &name, int width, int height, const QDateTime &date)
    {
        const QString path = save + u'/' + name;
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(Qt::red);
        image.save(path, "PNG");
        QFile file(path);
        file.open(QIODevice::ReadWrite);
        file.setFileTime(date, QFileDevice::FileModificationTime);
        return path;
    }
};

TEST_F(HistoryListCommandTest, LineHasDateKindMeasureAndPath)
{
    HistoryItem image;
    image.id = "/s/glimpso-a.png";
    image.path = image.id;
    image.date = QDateTime(QDate(2026, 4, 5), QTime(6, 7, 8), QTimeZone::utc());
    image.kind = CaptureKind::image;
    image.pixelWidth = 640;
    image.pixelHeight = 480;
    const QString date = image.date.toLocalTime().toString(Qt::ISODate);
    EXPECT_EQ(HistoryListCommand::formatLine(image), date + "\timage\t640x480\t/s/glimpso-a.png");

    HistoryItem video = image;
    video.kind = CaptureKind::video;
    video.seconds = 3.14159;
    video.pixelWidth = video.pixelHeight = 0;
    EXPECT_EQ(HistoryListCommand::formatLine(video), date + "\tvideo\t3.14s\t/s/glimpso-a.png");
}

TEST_F(HistoryListCommandTest, TextLineShowsTheTextOnOneLine)
{
    HistoryItem text;
    text.id = "ID";
    text.date = QDateTime(QDate(2026, 4, 5), QTime(6, 7, 8), QTimeZone::utc());
    text.kind = CaptureKind::text;
    text.text = "a\tb\nc\\d";
    EXPECT_EQ(HistoryListCommand::formatLine(text),
              text.date.toLocalTime().toString(Qt::ISODate) + "\ttext\t-\ta\\tb\\nc\\\\d");
}

TEST_F(HistoryListCommandTest, ListsNewestFirstWithinTheReach)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QString older = capture("glimpso-older.png", 20, 10, now.addSecs(-3600));
    const QString newer = capture("glimpso-newer.png", 30, 15, now.addSecs(-60));
    capture("glimpso-ancient.png", 5, 5, now.addDays(-40));
    capture("someone-else.png", 5, 5, now);

    const auto outcome = HistoryListCommand::run({"--list"}, settings, support, cache);
    EXPECT_EQ(outcome.exitCode, 0);
    const QStringList lines = outcome.output.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].endsWith("\timage\t30x15\t" + newer)) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].endsWith("\timage\t20x10\t" + older)) << lines[1].toStdString();
}

TEST_F(HistoryListCommandTest, JsonIsAnArrayOfItemsInTheirStoredForm)
{
    settings.historyRetention.set(HistoryRetention::forever);
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QString older = capture("glimpso-older.png", 20, 10, now.addDays(-40));
    const QString newer = capture("glimpso-newer.png", 30, 15, now.addSecs(-60));

    const auto outcome = HistoryListCommand::run({"--list", "--json"}, settings, support, cache);
    EXPECT_EQ(outcome.exitCode, 0);
    const QJsonArray array = QJsonDocument::fromJson(outcome.output.toUtf8()).array();
    ASSERT_EQ(array.size(), 2);
    EXPECT_EQ(array[0]["path"].toString(), newer);
    EXPECT_EQ(array[0]["id"].toString(), newer);
    EXPECT_EQ(array[0]["kind"].toString(), "image");
    EXPECT_EQ(array[0]["pixelWidth"].toInteger(), 30);
    EXPECT_EQ(array[1]["path"].toString(), older);
    EXPECT_GT(array[0]["date"].toDouble(), array[1]["date"].toDouble());
}

TEST_F(HistoryListCommandTest, EmptyFolderGivesNothingOrAnEmptyArray)
{
    EXPECT_EQ(HistoryListCommand::run({"--list"}, settings, support, cache).output, "");
    EXPECT_EQ(HistoryListCommand::run({"--list", "--json"}, settings, support, cache).output, "[]");
}

TEST_F(HistoryListCommandTest, WrongOptionsAreUsageErrors)
{
    for (const QStringList &arguments : {QStringList{"--json"}, QStringList{"--list", "--xml"}, QStringList{"list"}}) {
        const auto outcome = HistoryListCommand::run(arguments, settings, support, cache);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.error, "glimpso: usage: glimpso history --list [--json]");
        EXPECT_TRUE(outcome.output.isEmpty());
    }
}

} // namespace
