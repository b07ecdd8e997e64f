#include "settings/AppSettings.h"

#include "SettingsTestSupport.h"

#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <gtest/gtest.h>

namespace {

class AppSettingsTest : public ::testing::Test
{
protected:
    SettingsFile file;
    RecordingLoginItem loginItem;

    std::unique_ptr<AppSettings> make() { return std::make_unique<AppSettings>(*file.storage, loginItem); }
    std::unique_ptr<AppSettings> reload()
    {
        file.reopen();
        return make();
    }
    void store(const QString &key, const QVariant &value) { file.storage->setValue(key, value); }
};

TEST_F(AppSettingsTest, EmptyFileReadsEveryDefault)
{
    auto s = make();
    EXPECT_EQ(s->saveDirectoryPath(), AppSettings::defaultSaveDirectory());
    EXPECT_EQ(s->defaultColorHex(), "#FF3B30");
    EXPECT_EQ(s->saveFormat(), SaveFormat::png);
    EXPECT_DOUBLE_EQ(s->strokeWidth(), 3.0);
    EXPECT_DOUBLE_EQ(s->toolbarOpacity(), 0.85);
    EXPECT_DOUBLE_EQ(s->toolbarCornerRadius(), 10.0);
    EXPECT_EQ(s->toolbarBgColorHex(), "glass");
    EXPECT_EQ(s->toolbarIconColorHex(), "auto");
    EXPECT_EQ(s->accentColorHex(), "#EBEBEB");
    EXPECT_EQ(s->overlayColorHex(), "#000000");
    EXPECT_DOUBLE_EQ(s->overlayOpacity(), 0.45);
    EXPECT_EQ(s->editMode(), EditMode::onScreen);
    EXPECT_EQ(s->captureDelaySeconds(), 5);
    EXPECT_EQ(s->gifFrameRate(), 15);
    EXPECT_TRUE(s->gifShowsCursor());
    EXPECT_EQ(s->gifMaxSeconds(), 30);
    EXPECT_TRUE(s->gifCountdown());
    EXPECT_EQ(s->gifAfterRecording(), RecordingAction::copy);
    EXPECT_EQ(s->videoFrameRate(), 60);
    EXPECT_TRUE(s->videoShowsCursor());
    EXPECT_TRUE(s->videoCountdown());
    EXPECT_EQ(s->videoMaxMinutes(), 10);
    EXPECT_EQ(s->videoAfterRecording(), RecordingAction::save);
    EXPECT_TRUE(s->keepHistory());
    EXPECT_TRUE(s->saveCopies());
    EXPECT_EQ(s->historyEdge(), HistoryEdge::right);
    EXPECT_EQ(s->historyRetention(), HistoryRetention::week);
    EXPECT_DOUBLE_EQ(s->windowPadding(), 48.0);
    EXPECT_EQ(s->windowBackgroundHex(), "#FFFFFF");
    EXPECT_TRUE(s->windowShadow());
    EXPECT_FALSE(s->notificationSound());
    EXPECT_EQ(s->hotkeyRegion(), (Hotkey{19, 0x120000}));
    EXPECT_EQ(s->hotkeyAllDisplays(), (Hotkey{18, 0x120000}));
    EXPECT_EQ(s->hotkeyText(), (Hotkey{19, 0x1a0000}));
    EXPECT_EQ(s->hotkeyWindow(), (Hotkey{20, 0x1a0000}));
    EXPECT_EQ(s->hotkeyVideo(), (Hotkey{22, 0x1a0000}));
    EXPECT_EQ(s->hotkeyGIF(), (Hotkey{23, 0x1a0000}));
    EXPECT_EQ(s->hotkeyHistory(), (Hotkey{4, 0x1a0000}));
    EXPECT_FALSE(s->hotkeyGIFWindow().isAssigned());
    EXPECT_FALSE(s->hotkeyGIFScreen().isAssigned());
    EXPECT_FALSE(s->hotkeyVideoWindow().isAssigned());
    EXPECT_FALSE(s->hotkeyVideoScreen().isAssigned());
    EXPECT_EQ(s->editorShortcuts(), EditorShortcuts::defaults());
    EXPECT_EQ(s->cloudProvider(), CloudProvider::none);
    EXPECT_TRUE(s->cloudEndpoint().isEmpty());
    EXPECT_TRUE(s->cloudAccessKeyID().isEmpty());
    EXPECT_FALSE(s->cloudCredentialsLoaded());
    EXPECT_FALSE(s->cloudCredentialsDenied());
}

TEST_F(AppSettingsTest, BooleansWithoutAnotherDefaultReadFalseAndTheOthersTrue)
{
    auto s = make();
    EXPECT_FALSE(s->gifRetina());
    EXPECT_FALSE(s->gifShowsClicks());
    EXPECT_FALSE(s->videoCompatible());
    EXPECT_FALSE(s->videoSystemAudio());
    EXPECT_FALSE(s->videoMicrophone());
    EXPECT_FALSE(s->keepMenuOpenDuringCapture());
    EXPECT_FALSE(s->windowTransparent());
    EXPECT_TRUE(s->videoRetina());
    EXPECT_TRUE(s->videoShowsClicks());
    EXPECT_TRUE(s->hideDesktopIcons());
    EXPECT_TRUE(s->shutterSound());
}

TEST_F(AppSettingsTest, UnknownEnumerationTextReadsTheDefault)
{
    store("settings.capture.editMode", "sideways");
    store("settings.history.retention", "fortnight");
    store("settings.video.after", "print");
    store("settings.gif.after", "email");
    store("settings.saveFormat", "bmp");
    auto s = reload();
    EXPECT_EQ(s->editMode(), EditMode::onScreen);
    EXPECT_EQ(s->historyRetention(), HistoryRetention::week);
    EXPECT_EQ(s->videoAfterRecording(), RecordingAction::save);
    EXPECT_EQ(s->gifAfterRecording(), RecordingAction::copy);
    EXPECT_EQ(s->saveFormat(), SaveFormat::png);
}

TEST_F(AppSettingsTest, KnownEnumerationTextIsRead)
{
    store("settings.capture.editMode", "afterCapture");
    store("settings.history.retention", "forever");
    store("settings.cloud.provider", "s3Compatible");
    auto s = reload();
    EXPECT_EQ(s->editMode(), EditMode::afterCapture);
    EXPECT_EQ(s->historyRetention(), HistoryRetention::forever);
    EXPECT_EQ(s->cloudProvider(), CloudProvider::s3Compatible);
}

TEST_F(AppSettingsTest, ValueOfTheWrongTypeReadsTheDefaultAndIsOverwrittenAtTheNextAssignment)
{
    store("settings.editor.strokeWidth", "thick");
    store("settings.gif.fps", "fast");
    store("settings.gif.cursor", "maybe");
    auto s = reload();
    EXPECT_DOUBLE_EQ(s->strokeWidth(), 3.0);
    EXPECT_EQ(s->gifFrameRate(), 15);
    EXPECT_TRUE(s->gifShowsCursor());

    s->strokeWidth.set(5.5);
    auto again = reload();
    EXPECT_DOUBLE_EQ(again->strokeWidth(), 5.5);
}

TEST_F(AppSettingsTest, AbsentBooleanIsToldFromStoredFalse)
{
    store("settings.gif.cursor", false);
    store("settings.history.keep", false);
    auto s = reload();
    EXPECT_FALSE(s->gifShowsCursor());
    EXPECT_FALSE(s->keepHistory());
    EXPECT_TRUE(s->videoShowsCursor()); // absent: default
}

TEST_F(AppSettingsTest, StoredZeroIsToldFromAbsent)
{
    store("settings.capture.delaySeconds", 0);
    store("settings.overlay.opacity", 0.0);
    auto s = reload();
    EXPECT_EQ(s->captureDelaySeconds(), 0);
    EXPECT_DOUBLE_EQ(s->overlayOpacity(), 0.0);
}

TEST_F(AppSettingsTest, BooleanKeysWithoutOtherDefaultReadGarbageAsFalse)
{
    store("settings.gif.retina", "sure");
    store("settings.video.h264", "true");
    auto s = reload();
    EXPECT_FALSE(s->gifRetina());
    EXPECT_TRUE(s->videoCompatible());
}

TEST_F(AppSettingsTest, EveryAssignmentIsWrittenAtOnce)
{
    auto s = make();
    s->saveFormat.set(SaveFormat::heic);
    s->captureDelaySeconds.set(10);
    s->defaultColorHex.set("#00FF00");
    s->hotkeyGIFWindow.set(Hotkey{5, Hotkey::commandFlag});
    s->keepMenuOpenDuringCapture.set(true);

    auto reread = reload();
    EXPECT_EQ(reread->saveFormat(), SaveFormat::heic);
    EXPECT_EQ(reread->captureDelaySeconds(), 10);
    EXPECT_EQ(reread->defaultColorHex(), "#00FF00");
    EXPECT_EQ(reread->hotkeyGIFWindow(), (Hotkey{5, Hotkey::commandFlag}));
    EXPECT_TRUE(reread->keepMenuOpenDuringCapture());
}

TEST_F(AppSettingsTest, StoreValidatesNothing)
{
    auto s = make();
    s->overlayOpacity.set(7.5);
    s->gifFrameRate.set(-3);
    EXPECT_DOUBLE_EQ(reload()->overlayOpacity(), 7.5);
    EXPECT_EQ(reload()->gifFrameRate(), -3);
}

TEST_F(AppSettingsTest, CorruptHotkeyJsonReadsThatHotkeysDefault)
{
    store("settings.hotkey.region", "{not json");
    store("settings.hotkey.window", R"({"keyCode":"x","modifierFlagsRaw":0})");
    store("settings.hotkey.text", R"({"keyCode":8,"modifierFlagsRaw":1048576})");
    auto s = reload();
    EXPECT_EQ(s->hotkeyRegion(), (Hotkey{19, 0x120000}));
    EXPECT_EQ(s->hotkeyWindow(), (Hotkey{20, 0x1a0000}));
    EXPECT_EQ(s->hotkeyText(), (Hotkey{8, 0x100000}));
}

TEST_F(AppSettingsTest, EditorMapKeepsStoredCopyDropsUnknownAndFillsTheRest)
{
    store("settings.hotkey.editor",
          R"({"copy":{"keyCode":7,"modifierFlagsRaw":1179648},"paint":{"keyCode":1,"modifierFlagsRaw":0}})");
    auto s = reload();
    const EditorShortcutMap map = s->editorShortcuts();
    EXPECT_EQ(map.size(), 6u);
    EXPECT_EQ(map.at(EditorShortcut::copy), (Hotkey{7, 0x120000}));
    for (EditorShortcut other : {EditorShortcut::save, EditorShortcut::upload, EditorShortcut::undo,
                                 EditorShortcut::redo, EditorShortcut::text})
        EXPECT_EQ(map.at(other), EditorShortcuts::defaultHotkey(other));
}

TEST_F(AppSettingsTest, CorruptEditorMapReadsAllDefaults)
{
    store("settings.hotkey.editor", "[1,2,3]");
    EXPECT_EQ(reload()->editorShortcuts(), EditorShortcuts::defaults());
}

TEST_F(AppSettingsTest, EditorBindingReadsAndWritesOneEntry)
{
    auto s = make();
    EXPECT_EQ(s->editorShortcut(EditorShortcut::save), (Hotkey{1, Hotkey::commandFlag}));
    s->setEditorShortcut(EditorShortcut::save, Hotkey{1, Hotkey::commandFlag | Hotkey::shiftFlag});
    auto reread = reload();
    EXPECT_EQ(reread->editorShortcut(EditorShortcut::save), (Hotkey{1, Hotkey::commandFlag | Hotkey::shiftFlag}));
    EXPECT_EQ(reread->editorShortcut(EditorShortcut::copy), EditorShortcuts::defaultHotkey(EditorShortcut::copy));
}

TEST_F(AppSettingsTest, ObsoleteApiKeyIsRemovedAtCreation)
{
    store("settings.cloud.apiKey", "secret");
    store("settings.cloud.bucket", "shots");
    auto s = reload();
    EXPECT_FALSE(file.storage->contains("settings.cloud.apiKey"));
    file.reopen();
    EXPECT_FALSE(file.storage->contains("settings.cloud.apiKey"));
    EXPECT_EQ(s->cloudBucket(), "shots");
}

TEST_F(AppSettingsTest, HotkeysChangedFiresOnlyOnRealChangesOfGlobalHotkeys)
{
    auto s = make();
    QSignalSpy spy(s.get(), &AppSettings::hotkeysChanged);
    s->hotkeyRegion.set(s->hotkeyRegion()); // same value
    EXPECT_EQ(spy.count(), 0);
    s->hotkeyVideoScreen.set(Hotkey{21, Hotkey::commandFlag});
    EXPECT_EQ(spy.count(), 1);
    s->setEditorShortcut(EditorShortcut::copy, Hotkey{7, Hotkey::commandFlag});
    s->strokeWidth.set(9);
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(AppSettingsTest, ReloadShortcutsPicksUpTheFileEditedByHand)
{
    auto s = make();
    QSignalSpy hotkeys(s.get(), &AppSettings::hotkeysChanged);
    QSignalSpy changed(s.get(), &AppSettings::changed);
    {
        // Another program writes the file, as a person with an editor would.
        QSettings other(file.path, QSettings::IniFormat);
        other.setValue("settings.hotkey.region", R"({"keyCode":20,"modifierFlagsRaw":1179648})");
        other.setValue("settings.hotkey.editor", R"({"copy":{"keyCode":40,"modifierFlagsRaw":1048576}})");
    }
    s->reloadShortcuts();
    EXPECT_EQ(s->hotkeyRegion(), (Hotkey{20, 0x120000}));
    EXPECT_EQ(s->editorShortcut(EditorShortcut::copy), (Hotkey{40, Hotkey::commandFlag}));
    EXPECT_EQ(hotkeys.count(), 1);
    EXPECT_EQ(changed.count(), 2);

    // Nothing new: nothing published.
    s->reloadShortcuts();
    EXPECT_EQ(hotkeys.count(), 1);
    EXPECT_EQ(changed.count(), 2);
}

TEST_F(AppSettingsTest, ChangedNamesTheKey)
{
    auto s = make();
    QSignalSpy spy(s.get(), &AppSettings::changed);
    s->overlayColorHex.set("#112233");
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy.at(0).at(0).toString(), "settings.overlay.color");
}

TEST_F(AppSettingsTest, ResetShortcutsRestoresAllElevenAndTheEditorMap)
{
    auto s = make();
    for (Setting<Hotkey> *hotkey : s->globalHotkeys())
        hotkey->set(Hotkey{0, Hotkey::optionFlag});
    s->setEditorShortcut(EditorShortcut::undo, Hotkey::unassigned());
    QSignalSpy spy(s.get(), &AppSettings::hotkeysChanged);

    s->resetShortcuts();

    EXPECT_EQ(spy.count(), 11);
    auto reread = reload();
    for (Setting<Hotkey> *hotkey : reread->globalHotkeys())
        EXPECT_EQ((*hotkey)(), hotkey->defaultValue()) << hotkey->key().toStdString();
    EXPECT_EQ(reread->editorShortcuts(), EditorShortcuts::defaults());
}

TEST_F(AppSettingsTest, ResetAppearanceLeavesTheWindowBackgroundAlone)
{
    auto s = make();
    s->defaultColorHex.set("#010101");
    s->accentColorHex.set("#020202");
    s->overlayColorHex.set("#030303");
    s->overlayOpacity.set(0.1);
    s->toolbarBgColorHex.set("#040404");
    s->toolbarIconColorHex.set("#050505");
    s->toolbarOpacity.set(0.2);
    s->toolbarCornerRadius.set(2);
    s->strokeWidth.set(8);
    s->windowTransparent.set(true);
    s->windowPadding.set(12);
    s->windowBackgroundHex.set("#ABCDEF");
    s->windowShadow.set(false);

    s->resetAppearance();

    auto r = reload();
    EXPECT_EQ(r->defaultColorHex(), "#FF3B30");
    EXPECT_EQ(r->accentColorHex(), "#EBEBEB");
    EXPECT_EQ(r->overlayColorHex(), "#000000");
    EXPECT_DOUBLE_EQ(r->overlayOpacity(), 0.45);
    EXPECT_EQ(r->toolbarBgColorHex(), "glass");
    EXPECT_EQ(r->toolbarIconColorHex(), "auto");
    EXPECT_DOUBLE_EQ(r->toolbarOpacity(), 0.85);
    EXPECT_DOUBLE_EQ(r->toolbarCornerRadius(), 10.0);
    EXPECT_DOUBLE_EQ(r->strokeWidth(), 3.0);
    EXPECT_TRUE(r->windowTransparent());
    EXPECT_DOUBLE_EQ(r->windowPadding(), 12);
    EXPECT_EQ(r->windowBackgroundHex(), "#ABCDEF");
    EXPECT_FALSE(r->windowShadow());
}

TEST_F(AppSettingsTest, DefaultSaveFolderIsScreenshotsInPictures)
{
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    ASSERT_FALSE(pictures.isEmpty());
    EXPECT_EQ(AppSettings::defaultSaveDirectory(), pictures + "/Screenshots");
}

TEST_F(AppSettingsTest, StoredSaveFolderIsUsedAsItStandsAndNotCreated)
{
    store("settings.saveDirectory", "/no/such/folder");
    auto s = reload();
    EXPECT_EQ(s->saveDirectoryPath(), "/no/such/folder");
    EXPECT_FALSE(QFile::exists("/no/such/folder"));
}

TEST_F(AppSettingsTest, AccessSaveDirectoryGivesThePlainPathAndAHarmlessStop)
{
    auto s = make();
    s->setSaveDirectory("/srv/shots");
    const auto access = s->accessSaveDirectory();
    EXPECT_EQ(access.path, "/srv/shots");
    ASSERT_TRUE(access.stop);
    access.stop();
    EXPECT_EQ(s->saveDirectoryPath(), "/srv/shots");
}

TEST_F(AppSettingsTest, LaunchAtLoginStartsFromTheDesktopsRecord)
{
    loginItem.enabled = true;
    EXPECT_TRUE(make()->launchAtLogin());
    loginItem.enabled = false;
    EXPECT_FALSE(make()->launchAtLogin());
    EXPECT_FALSE(file.storage->contains("launchAtLogin"));
}

TEST_F(AppSettingsTest, LaunchAtLoginTogglesOnlyWhenItDiffers)
{
    auto s = make();
    s->setLaunchAtLogin(false);
    EXPECT_EQ(loginItem.calls, 0);
    s->setLaunchAtLogin(true);
    EXPECT_EQ(loginItem.calls, 1);
    EXPECT_TRUE(loginItem.enabled);
}

TEST_F(AppSettingsTest, FailedLoginItemCallKeepsTheAssignedValue)
{
    loginItem.failure = "permission denied";
    auto s = make();
    s->setLaunchAtLogin(true);
    EXPECT_TRUE(s->launchAtLogin());
    EXPECT_FALSE(loginItem.enabled);
}

} // namespace
