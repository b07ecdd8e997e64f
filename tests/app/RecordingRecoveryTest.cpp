#include "app/RecordingRecovery.h"

#include "output/OutputService.h"
#include "settings/AppSettings.h"
#include "settings/IniSettingsStorage.h"
#include "videowriting/ModuleLoader.h"
#include "videowriting/VideoWritingModule.h"

#include "EventLoopWait.h"
#include "RecordingNotifier.h"
#include "SettingsFakes.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class RecordingRecoveryTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        saveFolder = dir.filePath(QStringLiteral("Shots"));
        inProgress = dir.filePath(QStringLiteral("Recordings"));
        QDir().mkpath(inProgress);
        settings.setSaveDirectory(saveFolder);
    }

    QString leftover(const QString &name, const QByteArray &bytes = QByteArray(100, 'v'))
    {
        const QString path = inProgress + QLatin1Char('/') + name;
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(bytes);
        return path;
    }

    // A stand-in for the remux: copies the file, or fails for names with "bad".
    static void copyOrFail(const QString &from, const QString &to)
    {
        if (from.contains(QStringLiteral("bad")))
            throw std::runtime_error("holds no whole part of a recording");
        QFile::copy(from, to);
    }

    QStringList run(const QStringList &leftovers, RecordingRecovery::Remux remux = copyOrFail)
    {
        RecordingRecovery recovery(output, notifier, [this](const QString &path) { history.push_back(path); },
                                   std::move(remux));
        std::optional<QStringList> saved;
        recovery.onDone = [&saved](const QStringList &files) { saved = files; };
        recovery.recover(leftovers);
        EXPECT_TRUE(processEventsUntil([&] { return saved.has_value(); }));
        return saved.value_or(QStringList{});
    }

    QStringList savedFiles() const { return QDir(saveFolder).entryList(QDir::Files, QDir::Name); }

    QTemporaryDir dir;
    IniSettingsStorage storage{dir.filePath(QStringLiteral("glimpso.conf"))};
    InertLoginItem login;
    AppSettings settings{storage, login};
    RecordingNotifier notifier;
    OutputService output{settings, notifier};
    QString saveFolder;
    QString inProgress;
    QStringList history;
};

} // namespace

TEST_F(RecordingRecoveryTest, EachLeftoverComesBackIntoTheSaveFolderAndTheHistory)
{
    const QString a = leftover(QStringLiteral("glimpso-recording-a.mp4"));
    const QString b = leftover(QStringLiteral("glimpso-recording-b.mp4"));
    const QStringList saved = run({a, b});

    ASSERT_EQ(saved.size(), 2);
    EXPECT_EQ(savedFiles().size(), 2);
    for (const QString &file : saved) {
        EXPECT_TRUE(file.startsWith(saveFolder + QStringLiteral("/glimpso-")));
        EXPECT_TRUE(file.endsWith(QStringLiteral(".mp4")));
    }
    EXPECT_EQ(history, saved);
    EXPECT_FALSE(QFile::exists(a));
    EXPECT_FALSE(QFile::exists(b));
}

TEST_F(RecordingRecoveryTest, OneNoticeTellsHowManyCameBackAndShowsTheFirst)
{
    const QStringList saved = run({leftover(QStringLiteral("a.mp4")), leftover(QStringLiteral("b.mp4"))});
    ASSERT_EQ(notifier.notices.size(), 1);
    const RecordedNotice &notice = notifier.notices.front();
    EXPECT_EQ(notice.title, QStringLiteral("Recovered 2 recordings"));
    EXPECT_EQ(notice.body, QStringLiteral("It didn't finish last time; it's in your save folder."));
    EXPECT_EQ(notice.duration, 5.0);
    EXPECT_EQ(notice.action, NoticeAction::reveal(saved.first()));
}

TEST_F(RecordingRecoveryTest, OneRecordingIsTitledAsOne)
{
    run({leftover(QStringLiteral("a.mp4"))});
    ASSERT_EQ(notifier.notices.size(), 1);
    EXPECT_EQ(notifier.notices.front().title, QStringLiteral("Recovered a recording"));
    EXPECT_EQ(RecordingRecovery::title(3), QStringLiteral("Recovered 3 recordings"));
}

TEST_F(RecordingRecoveryTest, ALeftoverThatCantBeReadIsSkippedSilentlyAndStays)
{
    const QString bad = leftover(QStringLiteral("bad.mp4"));
    const QString good = leftover(QStringLiteral("good.mp4"));
    const QStringList saved = run({bad, good});
    EXPECT_EQ(saved.size(), 1);
    EXPECT_TRUE(QFile::exists(bad));
    EXPECT_FALSE(QFile::exists(good));
    EXPECT_TRUE(notifier.errors.isEmpty());
    ASSERT_EQ(notifier.notices.size(), 1);
    EXPECT_EQ(notifier.notices.front().title, QStringLiteral("Recovered a recording"));
    // No half copy is left behind for the next start.
    EXPECT_TRUE(QDir(inProgress + QStringLiteral("/recovered")).entryList(QDir::Files).isEmpty());
}

TEST_F(RecordingRecoveryTest, NothingRecoveredMeansNoNotice)
{
    const QStringList saved = run({leftover(QStringLiteral("bad-1.mp4")), leftover(QStringLiteral("bad-2.mp4"))});
    EXPECT_TRUE(saved.isEmpty());
    EXPECT_TRUE(notifier.notices.isEmpty());
    EXPECT_TRUE(notifier.errors.isEmpty());
    EXPECT_TRUE(history.isEmpty());
}

TEST_F(RecordingRecoveryTest, ASaveFolderThatCantBeWrittenLeavesTheLeftover)
{
    QFile blocker(saveFolder);
    blocker.open(QIODevice::WriteOnly);
    blocker.write("not a folder");
    blocker.close();
    const QString a = leftover(QStringLiteral("a.mp4"));
    const QStringList saved = run({a});
    EXPECT_TRUE(saved.isEmpty());
    EXPECT_TRUE(QFile::exists(a));
    EXPECT_TRUE(notifier.notices.isEmpty());
    EXPECT_TRUE(QDir(inProgress + QStringLiteral("/recovered")).entryList(QDir::Files).isEmpty());
}

TEST_F(RecordingRecoveryTest, ARecordingCutOffInTheMiddleIsMadeWholeByTheModule)
{
    qputenv("GLIMPSO_MODULE_DIR", GLIMPSO_MODULE_DIR);
    const auto &module = videowriting::VideoWritingModule::load(videowriting::ModuleLoader::folder());
    // A recording of 2.5 s, cut off in its last fragment.
    const QString path = inProgress + QStringLiteral("/glimpso-recording-cut.mp4");
    {
        videowriting::VideoWriter::Options options;
        options.width = 64;
        options.height = 48;
        options.codec = videowriting::VideoWriter::Codec::h264;
        auto writer = module.openWriter(path.toStdString(), options);
        std::vector<std::uint8_t> pixels(64 * 48 * 4, 0x30);
        for (int i = 0; i < 75; ++i) {
            videowriting::VideoFrame frame{pixels.data(), 64, 48, 64 * 4, i / 30.0, std::nullopt, {}};
            pixels[std::size_t(i) * 4] = 0xFF;
            writer->append(frame);
            // As a live stream: the writer keeps up.
            QThread::msleep(2);
        }
        writer->finish(2.5);
    }
    QFile::resize(path, QFileInfo(path).size() - 300);

    const QStringList saved = run({path}, {});
    ASSERT_EQ(saved.size(), 1);
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_GT(QFileInfo(saved.first()).size(), 1000);
}
