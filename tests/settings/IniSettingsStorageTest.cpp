#include "settings/AppSettings.h"
#include "settings/IniSettingsStorage.h"

#include "SettingsTestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>


namespace {

void writeFile(const QString &path, const QByteArray &text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

TEST(IniSettingsStorage, CreatesItsFolderAndWritesPlainKeys)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("deep/glimpso/glimpso.conf");
    IniSettingsStorage storage(path);
    storage.setValue("settings.capture.editMode", "afterCapture");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("settings.capture.editMode=afterCapture"));
}

TEST(IniSettingsStorage, GarbageLinesDoNotLoseTheReadableKeys)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("glimpso.conf");
    writeFile(path, "\x01\x02 garbage ]]][[[\n[General]\nsettings.gif.fps=24\n=====\nsettings.saveFormat=jpeg\n"
                    "settings.editor.strokeWidth=\xff\xfe\n");
    IniSettingsStorage storage(path);
    RecordingLoginItem login;
    AppSettings settings(storage, login);
    EXPECT_EQ(settings.gifFrameRate(), 24);
    EXPECT_EQ(settings.saveFormat(), SaveFormat::jpeg);
    EXPECT_DOUBLE_EQ(settings.strokeWidth(), 3.0);

    settings.captureDelaySeconds.set(3);
    IniSettingsStorage reread(path);
    RecordingLoginItem login2;
    AppSettings again(reread, login2);
    EXPECT_EQ(again.gifFrameRate(), 24);
    EXPECT_EQ(again.saveFormat(), SaveFormat::jpeg);
    EXPECT_EQ(again.captureDelaySeconds(), 3);
}

TEST(IniSettingsStorage, UnwritableFolderKeepsValuesForTheSession)
{
    // A file where the folder should be stops even root from writing there.
    QTemporaryDir dir;
    const QString blocker = dir.filePath("glimpso");
    writeFile(blocker, "not a folder");
    IniSettingsStorage storage(blocker + "/glimpso.conf");
    RecordingLoginItem login;
    AppSettings settings(storage, login);
    EXPECT_EQ(settings.gifFrameRate(), 15);
    settings.gifFrameRate.set(30);
    EXPECT_EQ(settings.gifFrameRate(), 30);
    EXPECT_FALSE(QFileInfo(blocker).isDir());
}

TEST(IniSettingsStorage, TextWithCommasSurvivesTheRoundTrip)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("glimpso.conf");
    {
        IniSettingsStorage storage(path);
        RecordingLoginItem login;
        AppSettings settings(storage, login);
        settings.saveDirectoryPath.set("/home/me/Shots, old");
    }
    IniSettingsStorage storage(path);
    RecordingLoginItem login;
    AppSettings settings(storage, login);
    EXPECT_EQ(settings.saveDirectoryPath(), "/home/me/Shots, old");
}

} // namespace
