#include "output/OutputService.h"

#include "appbase/AppError.h"
#include "settings/AppSettings.h"
#include "settings/IniSettingsStorage.h"

#include <QClipboard>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>

#include "RecordingNotifier.h"
#include "SettingsFakes.h"

#include <gtest/gtest.h>

namespace {

// Runs the event loop until the future is done, so that continuations bound
// to the main thread run; fails the test after ten seconds.
template <typename T>
bool finish(QFuture<T> &future)
{
    const QDeadlineTimer deadline(10000);
    while (!future.isFinished() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return future.isFinished();
}

template <typename T>
AppError::Case failureOf(QFuture<T> future, QString *description = nullptr)
{
    EXPECT_TRUE(finish(future));
    try {
        future.waitForFinished();
    } catch (const AppError &error) {
        if (description)
            *description = error.errorDescription();
        return error.kind();
    }
    ADD_FAILURE() << "did not fail";
    return AppError::Case::keychainDenied;
}

QImage picture(QRgb colour = qRgb(10, 200, 30))
{
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(colour);
    image.setPixel(3, 4, qRgb(255, 0, 255));
    return image;
}

class OutputServiceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        saveFolder = dir.filePath("Shots");
        settings.setSaveDirectory(saveFolder);
        QGuiApplication::clipboard()->clear();
    }

    QStringList savedFiles() const { return QDir(saveFolder).entryList(QDir::Files, QDir::Name); }

    QTemporaryDir dir;
    IniSettingsStorage storage{dir.filePath("glimpso.conf")};
    InertLoginItem login;
    AppSettings settings{storage, login};
    RecordingNotifier notifier;
    OutputService output{settings, notifier};
    QString saveFolder;
};

} // namespace

TEST(OutputServiceNames, TimestampIsDashedAndLocal)
{
    const QDateTime when(QDate(2025, 3, 1), QTime(14, 22, 33));
    EXPECT_EQ(OutputService::timestamp(when), "2025-03-01-142233");
}

TEST_F(OutputServiceTest, UniqueNamesCountUpFromTwo)
{
    const QDateTime when(QDate(2025, 3, 1), QTime(9, 5, 7));
    QDir().mkpath(saveFolder);
    const QString first = OutputService::uniquePath(saveFolder, "gif", when);
    EXPECT_EQ(QFileInfo(first).fileName(), "glimpso-2025-03-01-090507.gif");
    QFile(first).open(QIODevice::WriteOnly);
    const QString second = OutputService::uniquePath(saveFolder, "gif", when);
    EXPECT_EQ(QFileInfo(second).fileName(), "glimpso-2025-03-01-090507-2.gif");
    QFile(second).open(QIODevice::WriteOnly);
    EXPECT_EQ(QFileInfo(OutputService::uniquePath(saveFolder, "gif", when)).fileName(),
              "glimpso-2025-03-01-090507-3.gif");
}

TEST_F(OutputServiceTest, TwoSavesInOneSecondReplaceEachOther)
{
    const QDateTime when(QDate(2025, 3, 1), QTime(9, 5, 7));
    OutputService::writeToDisk(picture(qRgb(1, 1, 1)), saveFolder, SaveFormat::png, when);
    const QString path = OutputService::writeToDisk(picture(qRgb(2, 2, 2)), saveFolder, SaveFormat::png, when);
    EXPECT_EQ(savedFiles(), QStringList{"glimpso-2025-03-01-090507.png"});
    EXPECT_EQ(QImage(path).pixel(0, 0), qRgb(2, 2, 2));
}

TEST_F(OutputServiceTest, JpegEndsInJpeg)
{
    settings.saveFormat.set(SaveFormat::jpeg);
    auto future = output.handle(picture(), false);
    ASSERT_TRUE(finish(future));
    const QString path = future.result();
    EXPECT_TRUE(path.endsWith(".jpeg"));
    EXPECT_EQ(QImage(path).size(), QSize(40, 30));
}

TEST_F(OutputServiceTest, SaveWritesTheFileAndPutsItFirstOnTheClipboard)
{
    auto future = output.handle(picture(), true);
    ASSERT_TRUE(finish(future));
    const QString path = future.result();
    EXPECT_TRUE(QFileInfo(path).fileName().startsWith("glimpso-"));
    EXPECT_EQ(QImage(path).convertToFormat(QImage::Format_RGB32), picture());

    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(data, nullptr);
    ASSERT_GE(data->formats().size(), 3);
    EXPECT_EQ(data->formats().first(), "text/uri-list");
    EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(path)});
    EXPECT_EQ(data->data("x-special/gnome-copied-files"), "copy\n" + QUrl::fromLocalFile(path).toEncoded());
    EXPECT_EQ(QImage::fromData(data->data("image/png"), "png").convertToFormat(QImage::Format_RGB32), picture());

    ASSERT_EQ(notifier.notices.size(), 1);
    EXPECT_EQ(notifier.notices[0].title, "Screenshot saved");
    EXPECT_EQ(notifier.notices[0].body, QFileInfo(path).fileName());
    EXPECT_EQ(notifier.notices[0].action, NoticeAction::reveal(path));
    EXPECT_EQ(notifier.notices[0].duration, 2.0);
}

TEST_F(OutputServiceTest, CopyWithoutSavedCopiesWritesNoFile)
{
    settings.saveCopies.set(false);
    auto future = output.copy(picture());
    ASSERT_TRUE(finish(future));
    EXPECT_FALSE(future.result().has_value());
    EXPECT_TRUE(savedFiles().isEmpty());
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(data, nullptr);
    EXPECT_FALSE(data->hasUrls());
    EXPECT_EQ(QImage::fromData(data->data("image/png"), "png").convertToFormat(QImage::Format_RGB32), picture());
    ASSERT_EQ(notifier.notices.size(), 1);
    EXPECT_EQ(notifier.notices[0].title, "Copied to clipboard");
    EXPECT_EQ(notifier.notices[0].body, QString::fromUtf8("40×30 screenshot"));
    EXPECT_EQ(notifier.notices[0].action, NoticeAction::none());
}

TEST_F(OutputServiceTest, CopyWithSavedCopiesRevealsTheFile)
{
    auto future = output.copy(picture());
    ASSERT_TRUE(finish(future));
    ASSERT_TRUE(future.result().has_value());
    const QString path = *future.result();
    EXPECT_EQ(savedFiles(), QStringList{QFileInfo(path).fileName()});
    ASSERT_EQ(notifier.notices.size(), 1);
    EXPECT_EQ(notifier.notices[0].title, "Copied to clipboard");
    EXPECT_EQ(notifier.notices[0].body, QFileInfo(path).fileName());
    EXPECT_EQ(notifier.notices[0].action, NoticeAction::reveal(path));
}

TEST_F(OutputServiceTest, AFolderThatVanishedIsSaveFolderUnavailable)
{
    // A plain file where a parent folder should be: like a disk that is gone.
    QFile blocker(dir.filePath("Volume"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    settings.setSaveDirectory(dir.filePath("Volume/Captures"));
    QString description;
    EXPECT_EQ(failureOf(output.handle(picture(), true), &description), AppError::Case::saveFolderUnavailable);
    EXPECT_TRUE(description.contains(QString::fromUtf8("“Captures”"))) << description.toStdString();
    EXPECT_TRUE(notifier.notices.isEmpty());
    // The picture is kept within reach on the clipboard, without a file.
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(data, nullptr);
    EXPECT_FALSE(data->hasUrls());
    EXPECT_EQ(QImage::fromData(data->data("image/png"), "png").convertToFormat(QImage::Format_RGB32), picture());
}

TEST_F(OutputServiceTest, AWriteFailureInAWritableFolderIsFileIOFailed)
{
    settings.saveFormat.set(SaveFormat::png);
    const QDateTime now = QDateTime::currentDateTime();
    // Folders where this second's and the next second's files would go.
    QDir().mkpath(saveFolder + "/glimpso-" + OutputService::timestamp(now) + ".png");
    QDir().mkpath(saveFolder + "/glimpso-" + OutputService::timestamp(now.addSecs(1)) + ".png");
    EXPECT_EQ(failureOf(output.handle(picture(), true)), AppError::Case::fileIOFailed);
}

TEST_F(OutputServiceTest, RecordingsInOneSecondGetTheirOwnNames)
{
    const QString a = dir.filePath("glimpso-recording-a.gif");
    const QString b = dir.filePath("glimpso-recording-b.gif");
    for (const QString &path : {a, b}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("GIF89a");
    }
    auto first = output.saveFile(a, CaptureKind::gif);
    ASSERT_TRUE(finish(first));
    auto second = output.saveFile(b, CaptureKind::gif);
    ASSERT_TRUE(finish(second));
    const QString firstName = QFileInfo(first.result()).completeBaseName();
    const QString secondName = QFileInfo(second.result()).completeBaseName();
    EXPECT_TRUE(first.result().endsWith(".gif"));
    EXPECT_FALSE(QFile::exists(a));
    // Same second: the second one gets "-2"; a second boundary between them
    // gives two plain names.
    if (firstName.size() == secondName.size())
        EXPECT_NE(firstName, secondName);
    else
        EXPECT_EQ(secondName, firstName + "-2");
}

TEST_F(OutputServiceTest, ATextFileWithoutExtensionEndsInDat)
{
    const QString source = dir.filePath("glimpso-trim-1");
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    auto future = output.saveFile(source, CaptureKind::text);
    ASSERT_TRUE(finish(future));
    EXPECT_TRUE(future.result().endsWith(".dat"));
    const QString video = dir.filePath("glimpso-trim-2");
    QFile(video).open(QIODevice::WriteOnly);
    auto second = output.saveFile(video, CaptureKind::video);
    ASSERT_TRUE(finish(second));
    EXPECT_TRUE(second.result().endsWith(".mp4"));
}

TEST_F(OutputServiceTest, MovingIntoAFolderThatCannotBeMadeIsSaveFolderUnavailable)
{
    QFile blocker(dir.filePath("Gone"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    settings.setSaveDirectory(dir.filePath("Gone/Rec"));
    const QString source = dir.filePath("glimpso-recording-x.gif");
    QFile(source).open(QIODevice::WriteOnly);
    EXPECT_EQ(failureOf(output.saveFile(source, CaptureKind::gif)), AppError::Case::saveFolderUnavailable);
    EXPECT_TRUE(QFile::exists(source));
}

TEST_F(OutputServiceTest, CopyFileOfAGifCarriesItsBytes)
{
    const QString path = dir.filePath("a.gif");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("GIF89a-bytes");
    file.close();
    output.copyFile(path, CaptureKind::gif);
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(path)});
    EXPECT_EQ(data->data("image/gif"), "GIF89a-bytes");
    output.copyFile(dir.filePath("b.mp4"), CaptureKind::video);
    EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasFormat("image/gif"));
}
