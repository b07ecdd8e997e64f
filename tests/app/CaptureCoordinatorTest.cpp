#include "app/CaptureCoordinator.h"

#include "appbase/AppError.h"
#include "output/OutputService.h"
#include "settings/AppSettings.h"
#include "settings/IniSettingsStorage.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QTemporaryDir>

#include "EventLoopWait.h"
#include "RecordingNotifier.h"
#include "SettingsFakes.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

bool waitUntil(const std::function<bool()> &condition, int milliseconds = 10000)
{
    return processEventsUntil(condition, milliseconds);
}

// Lets every queued turn of the loop run, without waiting on a clock.
void settle()
{
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents();
}

QImage solid(QSize size, QRgb colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

struct FakeCapture : CaptureServicing {
    std::map<std::uint32_t, QImage> images;
    QList<std::uint32_t> plainCalls;
    QList<std::uint32_t> hidingCalls;
    int releases = 0;
    void releaseKeptMemory() override { ++releases; }
    int readyings = 0;
    QFuture<void> keepMemoryReady() override
    {
        ++readyings;
        return {};
    }
    QFuture<QImage> captureDisplay(std::uint32_t id) override
    {
        plainCalls << id;
        return shot(id);
    }
    QFuture<QImage> captureDisplayHidingDesktopIcons(std::uint32_t id, double) override
    {
        hidingCalls << id;
        return shot(id);
    }
    QFuture<QImage> shot(std::uint32_t id)
    {
        const auto it = images.find(id);
        if (it == images.end())
            return QtFuture::makeExceptionalFuture<QImage>(AppError::captureFailed("no picture of display"));
        return QtFuture::makeReadyFuture(it->second);
    }
};

struct FakeScreens : ScreenList {
    QList<Screen> list;
    QPointF mouse;
    std::optional<int> main;
    bool access = true;
    int requests = 0;
    QList<Screen> screens() const override { return list; }
    std::optional<int> mainIndex() const override { return main; }
    QPointF mouseLocation() const override { return mouse; }
    bool hasCaptureAccess() const override { return access; }
    void requestCaptureAccess() override { ++requests; }
};

struct FakeFocus : FocusKeeper {
    std::optional<Window> active;
    bool windowStillThere = true;
    QList<Window> activated;
    std::optional<Window> activeForeignWindow() override { return active; }
    bool activate(const Window &window) override
    {
        activated << window;
        return windowStillThere;
    }
};

struct FakeSelector : RegionSelecting {
    QList<ScreenSnapshot> snapshots;
    CaptureIntent intent;
    std::function<void(const RegionResult &)> completion;
    std::optional<ArmedSelection> armed;
    int presented = 0;
    void present() override { ++presented; }
    std::optional<ArmedSelection> armedSelection() const override { return armed; }
    void finish(const RegionResult &result) override
    {
        auto done = completion;
        done(result);
    }
};

struct FakeEditor : EditorWindow {
    std::function<void(const EditorAction &, const QImage &, double)> onOutput;
    std::function<void()> onClose;
    int presented = 0;
    void present() override { ++presented; }
};

class CaptureCoordinatorTest : public ::testing::Test
{
protected:
    CaptureCoordinatorTest()
    {
        settings.setSaveDirectory(dir.filePath("Shots"));
        settings.hideDesktopIcons.set(false);
        // Two displays side by side: 100 × 50 points at scale 1, then at scale 2.
        screens.list = {ScreenList::Screen{1, QRectF(0, 0, 100, 50), 1.0},
                        ScreenList::Screen{2, QRectF(100, 0, 100, 50), 2.0}};
        screens.mouse = QPointF(150, 20);
        capture.images[1] = solid(QSize(100, 50), qRgb(255, 0, 0));
        capture.images[2] = solid(QSize(200, 100), qRgb(0, 0, 255));
        focus.active = FocusKeeper::Window{0x400001, "xterm"};
    }

    CaptureCoordinator &coordinator()
    {
        if (!m_coordinator) {
            CaptureCoordinator::Parts parts{settings, capture, output, notifier, screens, focus};
            parts.note = [this](const QString &sentence) { notes << sentence; };
            parts.playShutter = [this] { ++shutters; };
            parts.makeSelector = [this](const QList<ScreenSnapshot> &snapshots, CaptureIntent intent,
                                        std::function<void(const RegionResult &)> completion) {
                auto selector = std::make_shared<FakeSelector>();
                selector->snapshots = snapshots;
                selector->intent = intent;
                selector->completion = std::move(completion);
                selectors << selector;
                return selector;
            };
            if (withEditor)
                parts.makeEditor = [this](const QImage &, double, auto onOutput, auto onClose) {
                    auto editor = std::make_unique<FakeEditor>();
                    editor->onOutput = onOutput;
                    editor->onClose = onClose;
                    editors << editor.get();
                    return editor;
                };
            parts.recognize = [this](const QImage &image) {
                recognised << image;
                if (recognitionError)
                    return QtFuture::makeExceptionalFuture<CaptureCoordinator::RecognizedText>(
                        AppError::captureFailed("reader broke"));
                return QtFuture::makeReadyFuture(recognition);
            };
            parts.addHistoryFile = [this](const QString &path) { historyFiles << path; };
            parts.addHistoryText = [this](const QString &text) { historyTexts << text; };
            parts.copyTextToClipboard = [this](const QString &text) { clipboardTexts << text; };
            parts.after = [this](qint64 seconds, std::function<void()> fire) { delayed.append({seconds, fire}); };
            parts.pickWindow = [this](CaptureCoordinator::PickCompletion completion) { picks << completion; };
            parts.prepareRecognition = [this] { ++recognitionPreparations; };
            parts.captureWindow = [this](std::uint32_t id, const CaptureCoordinator::WindowCaptureOptions &options,
                                         bool afterPicker) {
                windowOptions << options;
                windowCaptures << qMakePair(id, afterPicker);
                return QtFuture::makeReadyFuture(RegionCompositor::Composed{solid(QSize(8, 6), qRgb(9, 9, 9)), 1.0});
            };
            parts.keepCaptureMemoryMs = keepMemoryMs;
            m_coordinator = std::make_unique<CaptureCoordinator>(std::move(parts));
            QObject::connect(m_coordinator.get(), &CaptureCoordinator::regionFlowEnded,
                             [this](const QString &path, const QString &error) { ended << qMakePair(path, error); });
            QObject::connect(m_coordinator.get(), &CaptureCoordinator::windowFlowEnded,
                             [this](const QString &path, const QString &error) { windowEnded << qMakePair(path, error); });
            QObject::connect(m_coordinator.get(), &CaptureCoordinator::textRead,
                             [this](const QString &copied) { textsRead << copied; });
        }
        return *m_coordinator;
    }

    FakeSelector &startOverlay(bool allDisplays = true, CaptureIntent intent = CaptureIntent::image)
    {
        const int before = int(selectors.size());
        coordinator().captureRegion(allDisplays, intent);
        EXPECT_TRUE(waitUntil([&] { return selectors.size() > before; }));
        return *selectors.last();
    }

    QTemporaryDir dir;
    IniSettingsStorage storage{dir.filePath("glimpso.conf")};
    InertLoginItem login;
    AppSettings settings{storage, login};
    RecordingNotifier notifier;
    OutputService output{settings, notifier};
    FakeCapture capture;
    FakeScreens screens;
    FakeFocus focus;
    bool withEditor = true;
    int keepMemoryMs = 10000;
    bool recognitionError = false;
    CaptureCoordinator::RecognizedText recognition;

    QStringList notes;
    int shutters = 0;
    QList<std::shared_ptr<FakeSelector>> selectors;
    QList<FakeEditor *> editors;
    QList<QImage> recognised;
    QStringList historyFiles;
    QStringList historyTexts;
    QStringList clipboardTexts;
    QList<QPair<qint64, std::function<void()>>> delayed;
    QList<CaptureCoordinator::PickCompletion> picks;
    QList<CaptureCoordinator::WindowCaptureOptions> windowOptions;
    QList<QPair<std::uint32_t, bool>> windowCaptures;
    QList<QPair<QString, QString>> ended;
    QList<QPair<QString, QString>> windowEnded;
    QStringList textsRead;
    int recognitionPreparations = 0;
    std::unique_ptr<CaptureCoordinator> m_coordinator;
};

} // namespace

TEST_F(CaptureCoordinatorTest, AllDisplaysAreSnapshotInOrderAndTheOverlayGetsThem)
{
    FakeSelector &selector = startOverlay(true);
    EXPECT_EQ(notes.first(), "Started an all-displays capture");
    EXPECT_TRUE(coordinator().isCapturing());
    EXPECT_TRUE(coordinator().hasRegionSelector());
    EXPECT_EQ(selector.presented, 1);
    ASSERT_EQ(selector.snapshots.size(), 2);
    EXPECT_EQ(selector.snapshots[0].displayID, 1u);
    EXPECT_EQ(selector.snapshots[1].frame, QRectF(100, 0, 100, 50));
    EXPECT_EQ(selector.snapshots[1].scale, 2.0);
    EXPECT_EQ(capture.plainCalls, (QList<std::uint32_t>{1, 2}));
}

TEST_F(CaptureCoordinatorTest, ARegionCaptureTakesTheDisplayUnderThePointer)
{
    FakeSelector &selector = startOverlay(false);
    EXPECT_EQ(notes.first(), "Started a region capture");
    ASSERT_EQ(selector.snapshots.size(), 1);
    EXPECT_EQ(selector.snapshots[0].displayID, 2u);
}

TEST_F(CaptureCoordinatorTest, APointerOffAllDisplaysTakesTheMainOneThenTheFirst)
{
    screens.mouse = QPointF(-500, -500);
    screens.main = 1;
    EXPECT_EQ(startOverlay(false).snapshots.at(0).displayID, 2u);
    selectors.last()->finish(RegionResult::cancelled());
    screens.main.reset();
    EXPECT_EQ(startOverlay(false).snapshots.at(0).displayID, 1u);
}

TEST_F(CaptureCoordinatorTest, HidingDesktopIconsUsesThatRoute)
{
    settings.hideDesktopIcons.set(true);
    startOverlay(true);
    EXPECT_EQ(capture.hidingCalls, (QList<std::uint32_t>{1, 2}));
    EXPECT_TRUE(capture.plainCalls.isEmpty());
}

TEST_F(CaptureCoordinatorTest, ASecondPressDuringAnImageOverlayIsIgnored)
{
    FakeSelector &selector = startOverlay(false);
    coordinator().captureRegion(false, CaptureIntent::image);
    settle();
    EXPECT_EQ(selectors.size(), 1);
    EXPECT_TRUE(coordinator().hasRegionSelector());
    EXPECT_EQ(selector.presented, 1);
}

TEST_F(CaptureCoordinatorTest, TheTextHotkeyOverAnArmedSelectionReadsIt)
{
    FakeSelector &selector = startOverlay(true, CaptureIntent::image);
    selector.armed = RegionSelecting::ArmedSelection{QRectF(90, 10, 20, 20), selector.snapshots, {}};
    recognition.text = QStringLiteral("hello");
    coordinator().captureRegion(false, CaptureIntent::text);
    ASSERT_TRUE(waitUntil([&] { return !notifier.notices.isEmpty(); }));
    EXPECT_FALSE(coordinator().isCapturing());
    EXPECT_FALSE(coordinator().hasRegionSelector());
    ASSERT_EQ(recognised.size(), 1);
    // 20 × 20 points at the output scale 2, half from each display.
    EXPECT_EQ(recognised[0].size(), QSize(40, 40));
    EXPECT_EQ(notifier.notices[0].title, "Copied text");
    EXPECT_EQ(clipboardTexts, QStringList{"hello"});
    EXPECT_TRUE(notes.contains("Chose Copy Text"));
    EXPECT_EQ(shutters, 0);
    EXPECT_TRUE(historyFiles.isEmpty());
}

TEST_F(CaptureCoordinatorTest, TheTextHotkeyWithoutAnArmedSelectionIsIgnored)
{
    startOverlay(true, CaptureIntent::image);
    coordinator().captureRegion(false, CaptureIntent::text);
    settle();
    EXPECT_TRUE(coordinator().hasRegionSelector());
    EXPECT_TRUE(recognised.isEmpty());
}

TEST_F(CaptureCoordinatorTest, EscapeGivesTheFocusBackAndLeavesNoSelector)
{
    FakeSelector &selector = startOverlay();
    selector.finish(RegionResult::cancelled());
    EXPECT_FALSE(coordinator().isCapturing());
    EXPECT_FALSE(coordinator().hasRegionSelector());
    ASSERT_EQ(focus.activated.size(), 1);
    EXPECT_EQ(focus.activated[0].name, "xterm");
    EXPECT_FALSE(coordinator().previousFrontmost().has_value());
}

TEST_F(CaptureCoordinatorTest, CaptureMemoryIsLetGoOnceCapturesHaveStopped)
{
    keepMemoryMs = 30;
    coordinator();
    // Memory made ready at start goes when no capture comes.
    ASSERT_TRUE(waitUntil([&] { return capture.releases == 1; }));
    FakeSelector &selector = startOverlay();
    // Not while a capture runs.
    EXPECT_FALSE(waitUntil([&] { return capture.releases > 1; }, 150));
    selector.finish(RegionResult::cancelled());
    EXPECT_TRUE(waitUntil([&] { return capture.releases == 2; }));
}

TEST_F(CaptureCoordinatorTest, MemoryTheCaptureWentWithoutIsMadeReadyOnceItsFlowHasEnded)
{
    FakeSelector &selector = startOverlay();
    EXPECT_EQ(capture.readyings, 0);
    selector.finish(RegionResult::cancelled());
    EXPECT_EQ(capture.readyings, 1);
    startOverlay().finish(RegionResult::area(QRectF(0, 0, 50, 50), selectors.last()->snapshots));
    EXPECT_EQ(capture.readyings, 2);
}

TEST_F(CaptureCoordinatorTest, ACaptureFromTheEditorKeepsTheWindowBeforeIt)
{
    startOverlay().finish(RegionResult::area(QRectF(0, 0, 50, 50), selectors.last()->snapshots));
    ASSERT_EQ(editors.size(), 1);
    // Now glimpso's editor is in front: it is not remembered.
    focus.active.reset();
    startOverlay();
    ASSERT_TRUE(coordinator().previousFrontmost().has_value());
    EXPECT_EQ(coordinator().previousFrontmost()->name, "xterm");
}

TEST_F(CaptureCoordinatorTest, AWindowThatWentAwayCostsALogLineAndNoNotice)
{
    focus.windowStillThere = false;
    startOverlay().finish(RegionResult::cancelled());
    settle();
    EXPECT_EQ(focus.activated.size(), 1);
    EXPECT_TRUE(notifier.notices.isEmpty());
    EXPECT_TRUE(notifier.errors.isEmpty());
}

TEST_F(CaptureCoordinatorTest, ACodeWithAnUpperCaseHttpSchemeIsALink)
{
    recognition.code = QStringLiteral("HTTP://EXAMPLE.COM/a");
    recognition.text = QStringLiteral("ignored, the code wins");
    FakeSelector &selector = startOverlay(true, CaptureIntent::text);
    selector.finish(RegionResult::area(QRectF(0, 0, 50, 50), selector.snapshots));
    ASSERT_TRUE(waitUntil([&] { return !notifier.notices.isEmpty(); }));
    EXPECT_EQ(notifier.notices[0].title, QString::fromUtf8("Copied link · click to open"));
    EXPECT_EQ(notifier.notices[0].body, "HTTP://EXAMPLE.COM/a");
    EXPECT_EQ(notifier.notices[0].duration, 4.0);
    EXPECT_EQ(notifier.notices[0].action, NoticeAction::open("HTTP://EXAMPLE.COM/a"));
    EXPECT_EQ(clipboardTexts, QStringList{"HTTP://EXAMPLE.COM/a"});
    EXPECT_EQ(historyTexts, QStringList{"HTTP://EXAMPLE.COM/a"});
}

TEST_F(CaptureCoordinatorTest, AMailLinkIsJustACode)
{
    recognition.code = QStringLiteral("mailto:ana@example.com");
    FakeSelector &selector = startOverlay(true, CaptureIntent::text);
    selector.finish(RegionResult::area(QRectF(0, 0, 50, 50), selector.snapshots));
    ASSERT_TRUE(waitUntil([&] { return !notifier.notices.isEmpty(); }));
    EXPECT_EQ(notifier.notices[0].title, "Copied code");
    EXPECT_EQ(notifier.notices[0].action, NoticeAction::none());
    EXPECT_EQ(notifier.notices[0].duration, 2.0);
}

TEST_F(CaptureCoordinatorTest, LinkSchemesAndLineCounts)
{
    EXPECT_TRUE(CaptureCoordinator::isOpenableLink("https://a.example"));
    EXPECT_TRUE(CaptureCoordinator::isOpenableLink("HtTpS://a.example"));
    EXPECT_FALSE(CaptureCoordinator::isOpenableLink("ftp://a.example"));
    EXPECT_FALSE(CaptureCoordinator::isOpenableLink("just words"));
    EXPECT_EQ(CaptureCoordinator::lineCount("one"), 1);
    EXPECT_EQ(CaptureCoordinator::lineCount("one\n\ntwo\n\n\nthree\n"), 3);
    EXPECT_EQ(CaptureCoordinator::firstLine("\n\nfirst\nsecond"), "first");
    EXPECT_EQ(CaptureCoordinator::firstLine(""), "");
}

TEST_F(CaptureCoordinatorTest, ThreeLinesWithBlankLinesBetweenCountAsThree)
{
    recognition.text = QStringLiteral("alpha\n\nbeta\n\ngamma");
    FakeSelector &selector = startOverlay(true, CaptureIntent::text);
    selector.finish(RegionResult::area(QRectF(0, 0, 50, 50), selector.snapshots));
    ASSERT_TRUE(waitUntil([&] { return !notifier.notices.isEmpty(); }));
    EXPECT_EQ(notifier.notices[0].title, "Copied 3 lines");
    EXPECT_EQ(notifier.notices[0].body, "alpha");
}

TEST_F(CaptureCoordinatorTest, NothingFoundAndAFailedReading)
{
    FakeSelector &selector = startOverlay(true, CaptureIntent::text);
    selector.finish(RegionResult::area(QRectF(0, 0, 50, 50), selector.snapshots));
    ASSERT_TRUE(waitUntil([&] { return notifier.notices.size() == 1; }));
    EXPECT_EQ(notifier.notices[0].title, "No text found");
    EXPECT_EQ(notifier.notices[0].body, "Try a larger area or sharper text.");

    recognitionError = true;
    FakeSelector &again = startOverlay(true, CaptureIntent::text);
    again.finish(RegionResult::area(QRectF(0, 0, 50, 50), again.snapshots));
    ASSERT_TRUE(waitUntil([&] { return notifier.notices.size() == 2; }));
    EXPECT_EQ(notifier.notices[1].title, "Couldn't read the text");
    EXPECT_EQ(notifier.notices[1].body, "Capture failed: reader broke");
    EXPECT_TRUE(notifier.errors.isEmpty());
}

TEST_F(CaptureCoordinatorTest, ADelayOfZeroStillGoesThroughTheTaskAndTheGuard)
{
    settings.captureDelaySeconds.set(0);
    coordinator().captureRegionDelayed();
    coordinator().captureRegionDelayed();
    ASSERT_EQ(delayed.size(), 2);
    EXPECT_EQ(delayed[0].first, 0);
    EXPECT_TRUE(selectors.isEmpty());
    delayed[0].second();
    ASSERT_TRUE(waitUntil([&] { return selectors.size() == 1; }));
    // The second one meets the guard when it fires.
    delayed[1].second();
    settle();
    EXPECT_EQ(selectors.size(), 1);
}

TEST_F(CaptureCoordinatorTest, CloseUndoAndRedoDoNothingAndMakeNoSound)
{
    for (const EditorAction &action : {EditorAction::close(), EditorAction::undo(), EditorAction::redo()}) {
        auto future = coordinator().dispatch(action, solid(QSize(4, 4), 0), 1.0);
        ASSERT_TRUE(waitUntil([&] { return future.isFinished(); }));
        EXPECT_FALSE(future.result().has_value());
    }
    EXPECT_EQ(shutters, 0);
    EXPECT_TRUE(notes.isEmpty());
    EXPECT_TRUE(QDir(dir.filePath("Shots")).entryList(QDir::Files).isEmpty());
}

TEST_F(CaptureCoordinatorTest, CopyWithoutSavedCopiesGivesNoFileAndNoHistory)
{
    settings.saveCopies.set(false);
    auto future = coordinator().dispatch(EditorAction::copy(), solid(QSize(4, 3), 0), 1.0);
    ASSERT_TRUE(waitUntil([&] { return future.isFinished(); }));
    EXPECT_FALSE(future.result().has_value());
    EXPECT_TRUE(historyFiles.isEmpty());
    EXPECT_EQ(shutters, 1);
    EXPECT_EQ(notes, QStringList{"Chose Copy"});
}

TEST_F(CaptureCoordinatorTest, SaveFromTheOverlayWritesTheComposedPictureAndAddsItToHistory)
{
    FakeSelector &selector = startOverlay(true);
    // Across both displays: the left half scaled up to scale 2.
    selector.finish(RegionResult::selected(QRectF(50, 0, 100, 50), selector.snapshots, EditorAction::save(), {}));
    EXPECT_FALSE(coordinator().isCapturing());
    ASSERT_TRUE(waitUntil([&] { return !ended.isEmpty(); }));
    const QString path = ended[0].first;
    ASSERT_FALSE(path.isEmpty()) << ended[0].second.toStdString();
    EXPECT_EQ(historyFiles, QStringList{path});
    const QImage saved(path);
    ASSERT_EQ(saved.size(), QSize(200, 100));
    EXPECT_EQ(saved.pixel(10, 50), qRgb(255, 0, 0));
    EXPECT_EQ(saved.pixel(190, 50), qRgb(0, 0, 255));
    EXPECT_EQ(shutters, 1);
    EXPECT_TRUE(notes.contains("Chose Save"));
    ASSERT_EQ(notifier.notices.size(), 1);
    EXPECT_EQ(notifier.notices[0].title, "Screenshot saved");
    EXPECT_EQ(focus.activated.size(), 1);
}

TEST_F(CaptureCoordinatorTest, ASaveThatFailsIsReportedAndTheNextCaptureCanStart)
{
    QFile blocker(dir.filePath("Disk"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    settings.setSaveDirectory(dir.filePath("Disk/Shots"));
    FakeSelector &selector = startOverlay(true);
    selector.finish(RegionResult::selected(QRectF(0, 0, 50, 50), selector.snapshots, EditorAction::save(), {}));
    ASSERT_TRUE(waitUntil([&] { return !ended.isEmpty(); }));
    ASSERT_EQ(notifier.errors.size(), 1);
    EXPECT_EQ(notifier.errors[0].kind(), AppError::Case::saveFolderUnavailable);
    EXPECT_TRUE(ended[0].second.contains(QString::fromUtf8("“Shots”")));
    startOverlay(true);
}

TEST_F(CaptureCoordinatorTest, UploadWithoutAProviderKeepsTheFileAndSaysSo)
{
    FakeSelector &selector = startOverlay(true);
    selector.finish(RegionResult::selected(QRectF(0, 0, 50, 50), selector.snapshots, EditorAction::upload(), {}));
    ASSERT_TRUE(waitUntil([&] { return !ended.isEmpty(); }));
    ASSERT_EQ(notifier.errors.size(), 1);
    EXPECT_EQ(notifier.errors[0].kind(), AppError::Case::uploadNotConfigured);
    ASSERT_EQ(historyFiles.size(), 1);
    EXPECT_TRUE(QFile::exists(historyFiles[0]));
}

TEST_F(CaptureCoordinatorTest, ARectangleOffAllDisplaysIsCroppingFailed)
{
    FakeSelector &selector = startOverlay(true);
    selector.finish(RegionResult::selected(QRectF(900, 900, 10, 10), selector.snapshots, EditorAction::copy(), {}));
    ASSERT_TRUE(waitUntil([&] { return !ended.isEmpty(); }));
    ASSERT_EQ(notifier.errors.size(), 1);
    EXPECT_EQ(notifier.errors[0].kind(), AppError::Case::croppingFailed);
    EXPECT_EQ(shutters, 0);
}

TEST_F(CaptureCoordinatorTest, AnAreaOffAllDisplaysIsReportedAfterTheFocusGoesBack)
{
    FakeSelector &selector = startOverlay(true);
    selector.finish(RegionResult::area(QRectF(900, 900, 10, 10), selector.snapshots));
    EXPECT_EQ(focus.activated.size(), 1);
    EXPECT_TRUE(notifier.errors.isEmpty());
    ASSERT_TRUE(waitUntil([&] { return notifier.errors.size() == 1; }));
    EXPECT_EQ(notifier.errors[0].kind(), AppError::Case::croppingFailed);
}

TEST_F(CaptureCoordinatorTest, ADisplayThatCannotBeCapturedEndsTheSessionWithItsError)
{
    capture.images.erase(2);
    coordinator().captureRegion(true, CaptureIntent::image);
    ASSERT_TRUE(waitUntil([&] { return !notifier.errors.isEmpty(); }));
    EXPECT_EQ(notifier.errors[0].kind(), AppError::Case::captureFailed);
    EXPECT_FALSE(coordinator().isCapturing());
    EXPECT_TRUE(selectors.isEmpty());
    // Nothing was shown, so the focus was not handed back and stays remembered.
    EXPECT_TRUE(focus.activated.isEmpty());
    EXPECT_TRUE(coordinator().previousFrontmost().has_value());
}

TEST_F(CaptureCoordinatorTest, AScreenWithoutAnIdIsSkippedAndAloneIsDisplayNotFound)
{
    screens.list = {ScreenList::Screen{std::nullopt, QRectF(0, 0, 100, 50), 1.0}};
    screens.mouse = QPointF(10, 10);
    coordinator().captureRegion(false, CaptureIntent::image);
    ASSERT_TRUE(waitUntil([&] { return !notifier.errors.isEmpty(); }));
    EXPECT_EQ(notifier.errors[0].kind(), AppError::Case::displayNotFound);
    EXPECT_FALSE(coordinator().isCapturing());

    screens.list.append(ScreenList::Screen{2, QRectF(100, 0, 100, 50), 2.0});
    FakeSelector &selector = startOverlay(true);
    ASSERT_EQ(selector.snapshots.size(), 1);
    EXPECT_EQ(selector.snapshots[0].displayID, 2u);
}

TEST_F(CaptureCoordinatorTest, WithoutAccessTheSessionEndsWithConsentRevoked)
{
    screens.access = false;
    coordinator().captureRegion(false, CaptureIntent::image);
    ASSERT_TRUE(waitUntil([&] { return !notifier.errors.isEmpty(); }));
    EXPECT_EQ(notifier.errors[0].kind(), AppError::Case::consentRevoked);
    EXPECT_EQ(screens.requests, 1);
    EXPECT_FALSE(coordinator().isCapturing());
}

TEST_F(CaptureCoordinatorTest, ClosingOneOfTwoEditorsKeepsTheFocusTheSecondGivesItBack)
{
    coordinator().openEditor(solid(QSize(4, 4), 0), 1.0);
    startOverlay().finish(RegionResult::area(QRectF(0, 0, 50, 50), selectors.last()->snapshots));
    ASSERT_EQ(editors.size(), 2);
    EXPECT_EQ(coordinator().editorWindowCount(), 2);
    EXPECT_EQ(editors[1]->presented, 1);
    EXPECT_TRUE(notes.contains("Opened the editor window"));
    editors[0]->onClose();
    EXPECT_EQ(coordinator().editorWindowCount(), 1);
    EXPECT_TRUE(focus.activated.isEmpty());
    editors[1]->onClose();
    EXPECT_EQ(coordinator().editorWindowCount(), 0);
    EXPECT_EQ(focus.activated.size(), 1);
    settle();
}

TEST_F(CaptureCoordinatorTest, EditorOutputGoesThroughDispatchAndTheEditorStays)
{
    coordinator().openEditor(solid(QSize(6, 6), qRgb(1, 2, 3)), 1.0);
    ASSERT_EQ(editors.size(), 1);
    editors[0]->onOutput(EditorAction::save(), solid(QSize(6, 6), qRgb(1, 2, 3)), 1.0);
    ASSERT_TRUE(waitUntil([&] { return historyFiles.size() == 1; }));
    EXPECT_EQ(coordinator().editorWindowCount(), 1);
}

TEST_F(CaptureCoordinatorTest, WithoutAnEditorAnAreaGoesToTheClipboard)
{
    withEditor = false;
    FakeSelector &selector = startOverlay(true);
    selector.finish(RegionResult::area(QRectF(0, 0, 50, 50), selector.snapshots));
    ASSERT_TRUE(waitUntil([&] { return !notifier.notices.isEmpty(); }));
    EXPECT_EQ(notifier.notices[0].title, "Copied to clipboard");
    EXPECT_EQ(focus.activated.size(), 1);
}

TEST_F(CaptureCoordinatorTest, ShiftAtTheClickSwapsTheWindowBackground)
{
    coordinator().captureWindow();
    EXPECT_EQ(notes, QStringList{"Started a window capture"});
    EXPECT_TRUE(coordinator().isCapturing());
    ASSERT_EQ(picks.size(), 1);
    // A second request while the picker is up does nothing.
    coordinator().captureWindow();
    EXPECT_EQ(picks.size(), 1);
    picks[0](0x500001u, false);
    EXPECT_FALSE(coordinator().isCapturing());
    ASSERT_TRUE(waitUntil([&] { return windowOptions.size() == 1; }));
    ASSERT_TRUE(windowOptions[0].background.has_value());
    EXPECT_EQ(*windowOptions[0].background, QColor(Qt::white));

    coordinator().captureWindow();
    picks.last()(0x500001u, true);
    ASSERT_TRUE(waitUntil([&] { return windowOptions.size() == 2; }));
    EXPECT_FALSE(windowOptions[1].background.has_value());
    // On-screen editing: the window shot goes to the clipboard.
    ASSERT_TRUE(waitUntil([&] { return notifier.notices.size() == 2; }));
    EXPECT_EQ(notifier.notices[0].title, "Copied to clipboard");
}

TEST_F(CaptureCoordinatorTest, ALeftWindowPickHandsTheFocusBack)
{
    coordinator().captureWindow();
    picks[0](std::nullopt, false);
    EXPECT_FALSE(coordinator().isCapturing());
    EXPECT_EQ(focus.activated.size(), 1);
}

TEST_F(CaptureCoordinatorTest, ATextCaptureGetsTheReaderReadyWhileTheUserDrags)
{
    startOverlay(false, CaptureIntent::image);
    EXPECT_EQ(recognitionPreparations, 0);
    selectors.last()->finish(RegionResult::cancelled());
    startOverlay(false, CaptureIntent::text);
    EXPECT_EQ(recognitionPreparations, 1);
}

TEST_F(CaptureCoordinatorTest, AReadingSaysWhatItCopiedOrThatItFoundNothing)
{
    recognition.text = QStringLiteral("Total: $1,249.99");
    FakeSelector &selector = startOverlay(true, CaptureIntent::text);
    selector.finish(RegionResult::area(QRectF(0, 0, 50, 50), selector.snapshots));
    ASSERT_TRUE(waitUntil([&] { return textsRead.size() == 1; }));
    EXPECT_EQ(textsRead[0], "Total: $1,249.99");

    recognition = {};
    FakeSelector &again = startOverlay(true, CaptureIntent::text);
    again.finish(RegionResult::area(QRectF(0, 0, 50, 50), again.snapshots));
    ASSERT_TRUE(waitUntil([&] { return textsRead.size() == 2; }));
    EXPECT_EQ(textsRead[1], "");
    EXPECT_EQ(notifier.notices.last().title, "No text found");
}

TEST_F(CaptureCoordinatorTest, AWindowNamedByTheCommandLineGoesStraightToItsOutput)
{
    settings.editMode.set(EditMode::afterCapture);
    coordinator().captureWindow([](CaptureCoordinator::PickCompletion done) { done(0x4200007u, false); },
                                EditorAction::save());
    ASSERT_TRUE(waitUntil([&] { return windowEnded.size() == 1; }));
    EXPECT_EQ(windowCaptures, (QList<QPair<std::uint32_t, bool>>{{0x4200007u, false}}));
    // Saved although the settings would open the editor.
    EXPECT_TRUE(editors.isEmpty());
    EXPECT_TRUE(windowEnded[0].second.isEmpty()) << windowEnded[0].second.toStdString();
    EXPECT_TRUE(windowEnded[0].first.endsWith(".png")) << windowEnded[0].first.toStdString();
    EXPECT_EQ(historyFiles, QStringList{windowEnded[0].first});
    EXPECT_FALSE(coordinator().isCapturing());
}

TEST_F(CaptureCoordinatorTest, APickedWindowIsCapturedAsJustUncovered)
{
    coordinator().captureWindow();
    picks[0](0x500001u, false);
    ASSERT_TRUE(waitUntil([&] { return windowEnded.size() == 1; }));
    EXPECT_EQ(windowCaptures, (QList<QPair<std::uint32_t, bool>>{{0x500001u, true}}));
}

TEST_F(CaptureCoordinatorTest, ALeftPickEndsTheWindowFlowWithNothing)
{
    coordinator().captureWindow();
    picks[0](std::nullopt, false);
    ASSERT_EQ(windowEnded.size(), 1);
    EXPECT_EQ(windowEnded[0], qMakePair(QString(), QString()));
}
