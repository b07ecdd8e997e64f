#include "app/HotkeyManager.h"

#include "FakeKeyGrabber.h"
#include "SettingsFakes.h"
#include "appbase/InProcessNotices.h"
#include "settings/AppSettings.h"
#include "settingsui/RecorderView.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>

namespace {

using ID = HotkeyManager::HotkeyID;

const Hotkey kRegion { 19, 0x120000 }; // Ctrl+Shift+2
const Hotkey kAllDisplays { 18, 0x120000 }; // Ctrl+Shift+1
const Hotkey kText { 19, 0x1a0000 }; // Ctrl+Alt+Shift+2

class HotkeyManagerTest : public ::testing::Test
{
protected:
    MemorySettingsStorage storage;
    InertLoginItem loginItem;
    AppSettings settings { storage, loginItem };
    FakeKeyGrabber grabber;
    QStringList log; // what happened, in order: notices and actions alike
    std::unique_ptr<HotkeyManager> manager;
    QList<QMetaObject::Connection> connections;

    void SetUp() override
    {
        InProcessNotices &notices = InProcessNotices::instance();
        connections << QObject::connect(
            &notices, &InProcessNotices::hotkeyWillFire, [this] { log << "willFire"; });
        connections << QObject::connect(
            &notices, &InProcessNotices::overlayEscape, [this] { log << "overlayEscape"; });
        manager = std::make_unique<HotkeyManager>(actions(), settings, grabber);
    }

    void TearDown() override
    {
        manager.reset();
        for (const auto &c : std::as_const(connections))
            QObject::disconnect(c);
    }

    HotkeyManager::Actions actions()
    {
        HotkeyManager::Actions a;
        a.captureRegion = [this](bool all, CaptureIntent intent) {
            log << QStringLiteral("region all=%1 %2").arg(all).arg(CaptureIntents::rawValue(intent));
        };
        a.captureWindow = [this] { log << "window"; };
        a.toggleHistory = [this] { log << "history"; };
        a.startRecording
            = [this](CaptureKind kind, HotkeyManager::RecordingTarget target, const QString &prompt) {
                  log << QStringLiteral("record %1 %2 %3")
                             .arg(CaptureKinds::rawValue(kind))
                             .arg(int(target))
                             .arg(prompt);
              };
        return a;
    }

    void assignAllEleven()
    {
        settings.hotkeyGIFWindow.set({ 0, 0x1a0000 });
        settings.hotkeyGIFScreen.set({ 1, 0x1a0000 });
        settings.hotkeyVideoWindow.set({ 2, 0x1a0000 });
        settings.hotkeyVideoScreen.set({ 3, 0x1a0000 });
    }

    QStringList grabbedIds() const
    {
        QStringList ids;
        for (const QString &call : grabber.calls) {
            if (call.startsWith("grab "))
                ids << call.section(' ', 1, 1);
        }
        return ids;
    }
};

TEST_F(HotkeyManagerTest, RegistersTheAssignedSettingsInTheFixedOrder)
{
    manager->registerHotkeys();
    // region, all displays, text, window, (four unassigned recordings), history, GIF, video
    EXPECT_EQ(grabbedIds(), (QStringList { "2", "3", "5", "9", "6", "7", "8" }));
    EXPECT_EQ(grabber.held.at(2), kRegion);
    EXPECT_EQ(grabber.held.at(3), kAllDisplays);
    EXPECT_EQ(grabber.held.at(5), kText);
    EXPECT_EQ(manager->registered().size(), 7u);
}

TEST_F(HotkeyManagerTest, AnUnassignedHotkeyLeavesNoEntry)
{
    settings.hotkeyRegion.set(Hotkey::unassigned());
    manager->registerHotkeys();
    EXPECT_EQ(manager->registered().count(int(ID::region)), 0u);
    EXPECT_FALSE(grabbedIds().contains("2"));
    for (int id : { 10, 11, 12, 13 })
        EXPECT_EQ(manager->registered().count(id), 0u) << id;
    EXPECT_TRUE(manager->failures().empty());
}

TEST_F(HotkeyManagerTest, OneChangeReRegistersAllEleven)
{
    assignAllEleven();
    manager->registerHotkeys();
    ASSERT_EQ(manager->registered().size(), 11u);
    grabber.calls.clear();

    settings.hotkeyText.set({ 14, 0x1a0000 }); // Ctrl+Alt+Shift+E

    QStringList ungrabbed;
    for (const QString &call : grabber.calls) {
        if (call.startsWith("ungrab "))
            ungrabbed << call.section(' ', 1, 1);
    }
    ungrabbed.sort();
    QStringList all { "2", "3", "5", "6", "7", "8", "9", "10", "11", "12", "13" };
    QStringList sortedAll = all;
    sortedAll.sort();
    EXPECT_EQ(ungrabbed, sortedAll);
    EXPECT_EQ(grabbedIds(), (QStringList { "2", "3", "5", "9", "10", "11", "12", "13", "6", "7", "8" }));
    EXPECT_EQ(manager->registered().at(int(ID::text)), (Hotkey { 14, 0x1a0000 }));
    // Every ungrab comes before the first grab: the set is redone as a whole.
    EXPECT_TRUE(grabber.calls.first().startsWith("ungrab"));
    EXPECT_TRUE(grabber.calls.at(10).startsWith("ungrab"));
    EXPECT_TRUE(grabber.calls.at(11).startsWith("grab"));
}

TEST_F(HotkeyManagerTest, AnEditorShortcutChangeLeavesTheGrabsAlone)
{
    manager->registerHotkeys();
    grabber.calls.clear();
    settings.setEditorShortcut(EditorShortcut::copy, { 9, Hotkey::commandFlag });
    EXPECT_TRUE(grabber.calls.isEmpty());
}

TEST_F(HotkeyManagerTest, EscapeIsGrabbedOnlyWhileTheOverlayIsUp)
{
    manager->registerHotkeys();
    EXPECT_EQ(manager->registered().count(int(ID::escape)), 0u);

    Q_EMIT InProcessNotices::instance().overlayDidPresent();
    ASSERT_EQ(manager->registered().count(int(ID::escape)), 1u);
    EXPECT_EQ(grabber.held.at(4), (Hotkey { 53, 0 }));

    Q_EMIT InProcessNotices::instance().overlayDidDismiss();
    EXPECT_EQ(manager->registered().count(int(ID::escape)), 0u);
    EXPECT_EQ(grabber.held.count(4), 0u);
    EXPECT_EQ(grabber.calls.last(), "ungrab 4");
}

TEST_F(HotkeyManagerTest, EscapeStaysGrabbedWhenTheSettingsChangeUnderTheOverlay)
{
    manager->registerHotkeys();
    Q_EMIT InProcessNotices::instance().overlayDidPresent();
    settings.hotkeyRegion.set({ 20, 0x120000 });
    EXPECT_EQ(grabber.held.count(4), 1u);
    EXPECT_EQ(manager->registered().count(int(ID::escape)), 1u);
}

TEST_F(HotkeyManagerTest, DismissWithoutPresentDoesNothing)
{
    manager->registerHotkeys();
    grabber.calls.clear();
    Q_EMIT InProcessNotices::instance().overlayDidDismiss();
    EXPECT_TRUE(grabber.calls.isEmpty());
}

TEST_F(HotkeyManagerTest, EscapePressPostsOverlayEscapeAndNothingElse)
{
    manager->registerHotkeys();
    Q_EMIT InProcessNotices::instance().overlayDidPresent();
    grabber.press(4);
    EXPECT_EQ(log, QStringList { "overlayEscape" });
}

TEST_F(HotkeyManagerTest, HotkeyWillFireComesJustBeforeEachAction)
{
    assignAllEleven();
    manager->registerHotkeys();
    const std::vector<std::pair<int, QString>> table = {
        { 2, "region all=0 image" },
        { 3, "region all=1 image" },
        { 5, "region all=0 text" },
        { 6, "history" },
        { 7, "record gif 0 Drag over what to record as a GIF" },
        { 8, "record video 0 Drag over what to record as a video" },
        { 9, "window" },
        { 10, "record gif 1 " },
        { 11, "record gif 2 " },
        { 12, "record video 1 " },
        { 13, "record video 2 " },
    };
    for (const auto &[id, action] : table) {
        log.clear();
        grabber.press(id);
        EXPECT_EQ(log, (QStringList { "willFire", action })) << id;
    }
}

TEST_F(HotkeyManagerTest, UnknownIdsAreIgnored)
{
    manager->registerHotkeys();
    for (int id : { 0, 1, 14, 99, -2 })
        grabber.press(id);
    EXPECT_TRUE(log.isEmpty());
}

TEST_F(HotkeyManagerTest, AMissingActionIsLoggedNotCalled)
{
    HotkeyManager bare({}, settings, grabber);
    bare.registerHotkeys();
    grabber.press(7);
    EXPECT_EQ(log, QStringList { "willFire" });
}

TEST_F(HotkeyManagerTest, ARefusedGrabIsLoggedWithItsStatusAndKeptForTheSettingsPage)
{
    grabber.takenElsewhere.insert({ kRegion.keyCode, kRegion.modifierFlagsRaw });
    static QStringList messages;
    messages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { messages << text; });
    manager->registerHotkeys();
    qInstallMessageHandler(previous);

    ASSERT_EQ(manager->failures().size(), 1u);
    EXPECT_EQ(manager->failures().front().id, 2);
    EXPECT_EQ(manager->failures().front().hotkey, kRegion);
    EXPECT_EQ(manager->failures().front().status, 10);
    EXPECT_EQ(manager->registered().count(2), 0u);
    // The rest still work.
    EXPECT_EQ(manager->registered().size(), 6u);
    EXPECT_TRUE(messages.filter("RegisterEventHotKey failed for 2: status=10").size() == 1)
        << messages.join('\n').toStdString();
}

TEST_F(HotkeyManagerTest, TwoSettingsWithOneCombinationTheLaterFails)
{
    settings.hotkeyWindow.set(kRegion);
    manager->registerHotkeys();
    ASSERT_EQ(manager->failures().size(), 1u);
    EXPECT_EQ(manager->failures().front().id, int(ID::window));
    EXPECT_EQ(manager->registered().at(int(ID::region)), kRegion);
}

TEST_F(HotkeyManagerTest, AChangeThatFreesACombinationClearsItsFailure)
{
    settings.hotkeyWindow.set(kRegion);
    manager->registerHotkeys();
    ASSERT_EQ(manager->failures().size(), 1u);
    settings.hotkeyWindow.set({ 20, 0x1a0000 });
    EXPECT_TRUE(manager->failures().empty());
    EXPECT_EQ(manager->registered().count(int(ID::window)), 1u);
}

TEST_F(HotkeyManagerTest, AGrabLostAfterAKeyboardChangeBecomesAFailure)
{
    manager->registerHotkeys();
    grabber.lose(3);
    EXPECT_EQ(manager->registered().count(3), 0u);
    ASSERT_EQ(manager->failures().size(), 1u);
    EXPECT_EQ(manager->failures().front(),
        (HotkeyManager::Failure { 3, kAllDisplays, 10, "another program holds this combination" }));
}

TEST_F(HotkeyManagerTest, UnregisterGivesEverythingBackAndStopsListening)
{
    manager->registerHotkeys();
    Q_EMIT InProcessNotices::instance().overlayDidPresent();
    manager->unregisterHotkeys();
    EXPECT_TRUE(grabber.held.empty());
    EXPECT_TRUE(manager->registered().empty());

    grabber.calls.clear();
    settings.hotkeyRegion.set({ 20, 0x120000 });
    Q_EMIT InProcessNotices::instance().overlayDidPresent();
    grabber.press(2);
    EXPECT_TRUE(grabber.calls.isEmpty());
    EXPECT_TRUE(log.isEmpty());
}

TEST_F(HotkeyManagerTest, LocalMatchCoversRegionThenAllDisplaysWithoutHotkeyWillFire)
{
    manager->registerHotkeys();
    EXPECT_TRUE(manager->matchAndFire(kRegion, false));
    EXPECT_TRUE(manager->matchAndFire(kAllDisplays, false));
    EXPECT_EQ(log, (QStringList { "region all=0 image", "region all=1 image" }));
}

TEST_F(HotkeyManagerTest, LocalMatchNeedsExactlyTheSettingsModifiers)
{
    manager->registerHotkeys();
    EXPECT_FALSE(manager->matchAndFire({ 19, 0x120000 | Hotkey::controlFlag }, false));
    EXPECT_FALSE(manager->matchAndFire({ 19, Hotkey::commandFlag }, false));
    EXPECT_FALSE(manager->matchAndFire({ 19, 0 }, false));
    EXPECT_TRUE(log.isEmpty());
}

TEST_F(HotkeyManagerTest, LocalMatchIgnoresTheOtherShortcutsAndUnassignedSettings)
{
    settings.hotkeyAllDisplays.set(Hotkey::unassigned());
    manager->registerHotkeys();
    EXPECT_FALSE(manager->matchAndFire(kText, false));
    EXPECT_FALSE(manager->matchAndFire(Hotkey::unassigned(), false));
    EXPECT_FALSE(manager->matchAndFire(kAllDisplays, false));
    EXPECT_TRUE(log.isEmpty());
}

TEST_F(HotkeyManagerTest, WithAPopupOpenEveryGlobalShortcutFiresAsAHotKey)
{
    manager->registerHotkeys();
    EXPECT_TRUE(manager->matchAndFire(kText, true));
    EXPECT_EQ(log, (QStringList { "willFire", "region all=0 text" }));
}

TEST_F(HotkeyManagerTest, AKeyPressInGlimpsosOwnWindowStartsTheRegionCapture)
{
    manager->registerHotkeys();
    QWidget window;
    window.show();
    // Shift+2 arrives as "@" on a US keyboard.
    QKeyEvent press(
        QEvent::KeyPress, Qt::Key_At, Qt::ControlModifier | Qt::ShiftModifier, QStringLiteral("@"));
    const bool delivered = QApplication::sendEvent(&window, &press);
    EXPECT_TRUE(delivered);
    EXPECT_EQ(log, QStringList { "region all=0 image" });
}

TEST_F(HotkeyManagerTest, AListeningRecorderKeepsItsKeyPresses)
{
    manager->registerHotkeys();
    RecorderView recorder;
    recorder.show();
    QApplication::setActiveWindow(&recorder);
    recorder.setFocus();
    ASSERT_TRUE(recorder.isRecording());
    QKeyEvent press(
        QEvent::KeyPress, Qt::Key_At, Qt::ControlModifier | Qt::ShiftModifier, QStringLiteral("@"));
    QApplication::sendEvent(&recorder, &press);
    EXPECT_TRUE(log.isEmpty());
    EXPECT_EQ(recorder.hotkey(), kRegion);
}

TEST_F(HotkeyManagerTest, AHotKeyClosesOpenMenusButLeavesTheTrayMenuToTheTray)
{
    manager->registerHotkeys();
    QMenu tray;
    tray.addAction(QStringLiteral("Capture Region"));
    manager->setStatusMenu(&tray);
    tray.popup(QPoint(10, 10));
    ASSERT_EQ(QApplication::activePopupWidget(), &tray);
    grabber.press(2);
    EXPECT_TRUE(tray.isVisible());
    tray.close();

    QMenu other;
    other.addAction(QStringLiteral("Something"));
    other.popup(QPoint(10, 10));
    ASSERT_EQ(QApplication::activePopupWidget(), &other);
    grabber.press(2);
    EXPECT_FALSE(other.isVisible());
}

TEST(HotkeyManagerNames, EachIdNamesItsSetting)
{
    EXPECT_EQ(HotkeyManager::settingName(ID::region), "hotkeyRegion");
    EXPECT_EQ(HotkeyManager::settingName(ID::videoScreen), "hotkeyVideoScreen");
    EXPECT_EQ(HotkeyManager::settingName(ID::escape), "escape");
}

} // namespace
