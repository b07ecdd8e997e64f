#include "history/HistoryMigration.h"

#include "history/FileStatus.h"
#include "HistoryTestFiles.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QSize>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QTemporaryDir>
#include <QTimeZone>
#include <gtest/gtest.h>

namespace {

class HistoryMigrationTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString support = dir.filePath("support");
    QString save = dir.filePath("save");
    QString old = dir.filePath("support/History");
    QDateTime date = QDateTime(QDate(2025, 6, 7), QTime(8, 9, 10), QTimeZone::utc());

    QString stamp(const QDateTime &when) const
    {
        return QLocale::c().toString(when.toLocalTime(), QStringLiteral("yyyy-MM-dd-HHmmss"));
    }
    void writeIndex(const QJsonArray &items) { HistoryTestFiles::writeBytes(old + "/history.json", QJsonDocument(items).toJson()); }
    QJsonObject oldItem(const QDateTime &when, const char *kind) const
    {
        return {{"date", HistoryItem::secondsSinceReferenceDate(when)}, {"kind", kind}};
    }
};

TEST_F(HistoryMigrationTest, WithoutAnIndexNothingHappens)
{
    HistoryTestFiles::writePng(old + "/copy.png", 4, 4);
    EXPECT_FALSE(HistoryMigration::migrateCopies(support, save));
    EXPECT_TRUE(QFile::exists(old + "/copy.png"));
    EXPECT_FALSE(QDir(save).exists());
}

TEST_F(HistoryMigrationTest, FreeNameCountsUpFromTwo)
{
    QDir().mkpath(save);
    const QString first = "glimpso-" + stamp(date) + ".png";
    EXPECT_EQ(HistoryMigration::freeName(save, date), first);
    HistoryTestFiles::writeBytes(save + "/" + first, "x");
    EXPECT_EQ(HistoryMigration::freeName(save, date), "glimpso-" + stamp(date) + "-2.png");
    HistoryTestFiles::writeBytes(save + "/glimpso-" + stamp(date) + "-2.png", "x");
    EXPECT_EQ(HistoryMigration::freeName(save, date), "glimpso-" + stamp(date) + "-3.png");
}

TEST_F(HistoryMigrationTest, TwoCopiesWithTheSameDateGetTheSuffixTwo)
{
    HistoryTestFiles::writePng(old + "/one.png", 4, 4);
    HistoryTestFiles::writePng(old + "/two.png", 6, 6);
    QJsonObject one = oldItem(date, "image");
    one["fileName"] = "one.png";
    QJsonObject two = oldItem(date, "image");
    two["fileName"] = "two.png";
    writeIndex({one, two});

    const auto texts = HistoryMigration::migrateCopies(support, save);
    ASSERT_TRUE(texts);
    EXPECT_TRUE(texts->isEmpty());
    const QString first = save + "/glimpso-" + stamp(date) + ".png";
    const QString second = save + "/glimpso-" + stamp(date) + "-2.png";
    EXPECT_EQ(QImage(first).size(), QSize(4, 4));
    EXPECT_EQ(QImage(second).size(), QSize(6, 6));
    // Dated as before, so that they sort where they did.
    const auto status = FileStatus::of(second);
    ASSERT_TRUE(status && status->creationDate);
    EXPECT_LT(std::abs(status->creationDate->msecsTo(date)), 1000);
    EXPECT_FALSE(QDir(old).exists());
}

TEST_F(HistoryMigrationTest, TextsComeBackSavedCopiesAndNamelessItemsAreDropped)
{
    HistoryTestFiles::writePng(old + "/saved.png", 4, 4);
    QJsonObject text = oldItem(date, "text");
    text["text"] = "recognised";
    QJsonObject emptyText = oldItem(date, "text");
    QJsonObject saved = oldItem(date, "image");
    saved["fileName"] = "saved.png";
    saved["savedPath"] = "/elsewhere/saved.png";
    QJsonObject nameless = oldItem(date, "gif");
    QJsonObject missingFile = oldItem(date.addSecs(1), "image");
    missingFile["fileName"] = "gone.png";
    writeIndex({text, emptyText, saved, nameless, missingFile});

    const auto texts = HistoryMigration::migrateCopies(support, save);
    ASSERT_TRUE(texts);
    ASSERT_EQ(texts->size(), 1);
    const HistoryItem &item = texts->first();
    EXPECT_EQ(item.kind, CaptureKind::text);
    EXPECT_EQ(item.text, "recognised");
    EXPECT_EQ(item.date, date);
    EXPECT_EQ(item.id.size(), 36);
    EXPECT_FALSE(item.path);
    EXPECT_EQ(item.pixelWidth, 0);
    EXPECT_EQ(item.seconds, 0);
    EXPECT_TRUE(QDir(save).entryList(QDir::Files).isEmpty());
    EXPECT_FALSE(QDir(old).exists());
}

TEST_F(HistoryMigrationTest, AnUnreadableIndexLosesTheOldFolder)
{
    HistoryTestFiles::writePng(old + "/copy.png", 4, 4);
    HistoryTestFiles::writeBytes(old + "/history.json", "[{\"date\": 1, \"kind\":");
    EXPECT_FALSE(HistoryMigration::migrateCopies(support, save));
    EXPECT_FALSE(QDir(old).exists());
}

TEST_F(HistoryMigrationTest, FileNamesCannotReachOutsideTheOldFolder)
{
    HistoryTestFiles::writePng(support + "/precious.png", 4, 4);
    QJsonObject sneaky = oldItem(date, "image");
    sneaky["fileName"] = "../precious.png";
    writeIndex({sneaky});
    ASSERT_TRUE(HistoryMigration::migrateCopies(support, save));
    EXPECT_TRUE(QFile::exists(support + "/precious.png"));
}

} // namespace
