#pragma once

#include "settings/CloudCredentials.h"
#include "settings/EditorShortcut.h"
#include "settings/Hotkey.h"
#include "settings/LoginItem.h"
#include "settings/Setting.h"
#include "settings/SettingsEnums.h"
#include "settings/SettingsStorage.h"

#include <QObject>
#include <QString>

#include <functional>

// Everything the user can set, loaded once and written back the moment it is
// assigned. One instance per process, made by the application and handed to
// whoever needs it. Readers use the properties, never the file.
class AppSettings : public QObject
{
    Q_OBJECT

public:
    // The folder every writer uses, and a stop to call when done with it. On this
    // desktop folders need no scoped access, so stop does nothing.
    struct SaveDirectoryAccess {
        QString path;
        std::function<void()> stop;
    };

    AppSettings(SettingsStorage &storage, LoginItem &loginItem, QObject *parent = nullptr);

    // Pictures/Screenshots, or the temporary folder when there is no Pictures folder.
    static QString defaultSaveDirectory();

private:
    SettingsStorage &m_storage;
    std::function<void(const QString &)> m_notify;

public:
    // The table, in its order. Key, default and load rule of each row stand here only.
    Setting<QString> saveDirectoryPath{m_storage, m_notify, "settings.saveDirectory", defaultSaveDirectory(), LoadRule::string};
    Setting<QString> defaultColorHex{m_storage, m_notify, "settings.defaultColor", "#FF3B30", LoadRule::string};
    Setting<SaveFormat> saveFormat{m_storage, m_notify, "settings.saveFormat", SaveFormat::png, LoadRule::string};
    Setting<double> strokeWidth{m_storage, m_notify, "settings.editor.strokeWidth", 3.0, LoadRule::object};
    Setting<double> toolbarOpacity{m_storage, m_notify, "settings.toolbar.opacity", 0.85, LoadRule::object};
    Setting<double> toolbarCornerRadius{m_storage, m_notify, "settings.toolbar.cornerRadius", 10.0, LoadRule::object};
    Setting<QString> toolbarBgColorHex{m_storage, m_notify, "settings.toolbar.bgColor", "glass", LoadRule::string};
    Setting<QString> toolbarIconColorHex{m_storage, m_notify, "settings.toolbar.iconColor", "auto", LoadRule::string};
    Setting<QString> accentColorHex{m_storage, m_notify, "settings.accentColorHex", "#EBEBEB", LoadRule::string};
    Setting<QString> overlayColorHex{m_storage, m_notify, "settings.overlay.color", "#000000", LoadRule::string};
    Setting<double> overlayOpacity{m_storage, m_notify, "settings.overlay.opacity", 0.45, LoadRule::object};
    Setting<EditMode> editMode{m_storage, m_notify, "settings.capture.editMode", EditMode::onScreen, LoadRule::string};
    Setting<qint64> captureDelaySeconds{m_storage, m_notify, "settings.capture.delaySeconds", 5, LoadRule::object};
    Setting<bool> keepMenuOpenDuringCapture{m_storage, m_notify, "settings.capture.keepMenuOpen", false, LoadRule::boolean};
    Setting<qint64> gifFrameRate{m_storage, m_notify, "settings.gif.fps", 15, LoadRule::object};
    Setting<bool> gifRetina{m_storage, m_notify, "settings.gif.retina", false, LoadRule::boolean};
    Setting<bool> gifShowsCursor{m_storage, m_notify, "settings.gif.cursor", true, LoadRule::object};
    Setting<qint64> gifMaxSeconds{m_storage, m_notify, "settings.gif.maxSeconds", 30, LoadRule::object};
    Setting<bool> gifCountdown{m_storage, m_notify, "settings.gif.countdown", true, LoadRule::object};
    Setting<bool> gifShowsClicks{m_storage, m_notify, "settings.gif.clicks", false, LoadRule::boolean};
    Setting<RecordingAction> gifAfterRecording{m_storage, m_notify, "settings.gif.after", RecordingAction::copy, LoadRule::string};
    Setting<qint64> videoFrameRate{m_storage, m_notify, "settings.video.fps", 60, LoadRule::object};
    Setting<bool> videoRetina{m_storage, m_notify, "settings.video.retina", true, LoadRule::object};
    Setting<bool> videoCompatible{m_storage, m_notify, "settings.video.h264", false, LoadRule::boolean};
    Setting<bool> videoShowsCursor{m_storage, m_notify, "settings.video.cursor", true, LoadRule::object};
    Setting<bool> videoCountdown{m_storage, m_notify, "settings.video.countdown", true, LoadRule::object};
    Setting<qint64> videoMaxMinutes{m_storage, m_notify, "settings.video.maxMinutes", 10, LoadRule::object};
    Setting<bool> videoSystemAudio{m_storage, m_notify, "settings.video.systemAudio", false, LoadRule::boolean};
    Setting<bool> videoMicrophone{m_storage, m_notify, "settings.video.microphone", false, LoadRule::boolean};
    Setting<bool> videoShowsClicks{m_storage, m_notify, "settings.video.clicks", true, LoadRule::object};
    Setting<RecordingAction> videoAfterRecording{m_storage, m_notify, "settings.video.after", RecordingAction::save, LoadRule::string};
    Setting<bool> keepHistory{m_storage, m_notify, "settings.history.keep", true, LoadRule::object};
    Setting<bool> saveCopies{m_storage, m_notify, "settings.history.saveCopies", true, LoadRule::object};
    Setting<HistoryEdge> historyEdge{m_storage, m_notify, "settings.history.edge", HistoryEdge::right, LoadRule::string};
    Setting<HistoryRetention> historyRetention{m_storage, m_notify, "settings.history.retention", HistoryRetention::week, LoadRule::string};
    Setting<bool> hideDesktopIcons{m_storage, m_notify, "settings.capture.hideDesktopIcons", true, LoadRule::object};
    Setting<bool> windowTransparent{m_storage, m_notify, "settings.window.transparent", false, LoadRule::boolean};
    Setting<double> windowPadding{m_storage, m_notify, "settings.window.padding", 48.0, LoadRule::object};
    Setting<QString> windowBackgroundHex{m_storage, m_notify, "settings.window.color", "#FFFFFF", LoadRule::string};
    Setting<bool> windowShadow{m_storage, m_notify, "settings.window.shadow", true, LoadRule::object};
    Setting<bool> notificationSound{m_storage, m_notify, "settings.notification.sound", false, LoadRule::object};
    Setting<bool> shutterSound{m_storage, m_notify, "settings.capture.shutterSound", true, LoadRule::object};
    Setting<Hotkey> hotkeyRegion{m_storage, m_notify, "settings.hotkey.region", Hotkey{19, 0x120000}, LoadRule::json};
    Setting<Hotkey> hotkeyAllDisplays{m_storage, m_notify, "settings.hotkey.allDisplays", Hotkey{18, 0x120000}, LoadRule::json};
    Setting<Hotkey> hotkeyText{m_storage, m_notify, "settings.hotkey.text", Hotkey{19, 0x1a0000}, LoadRule::json};
    Setting<Hotkey> hotkeyWindow{m_storage, m_notify, "settings.hotkey.window", Hotkey{20, 0x1a0000}, LoadRule::json};
    Setting<Hotkey> hotkeyVideo{m_storage, m_notify, "settings.hotkey.video", Hotkey{22, 0x1a0000}, LoadRule::json};
    Setting<Hotkey> hotkeyGIF{m_storage, m_notify, "settings.hotkey.gif", Hotkey{23, 0x1a0000}, LoadRule::json};
    Setting<Hotkey> hotkeyGIFWindow{m_storage, m_notify, "settings.hotkey.gifWindow", Hotkey::unassigned(), LoadRule::json};
    Setting<Hotkey> hotkeyGIFScreen{m_storage, m_notify, "settings.hotkey.gifScreen", Hotkey::unassigned(), LoadRule::json};
    Setting<Hotkey> hotkeyVideoWindow{m_storage, m_notify, "settings.hotkey.videoWindow", Hotkey::unassigned(), LoadRule::json};
    Setting<Hotkey> hotkeyVideoScreen{m_storage, m_notify, "settings.hotkey.videoScreen", Hotkey::unassigned(), LoadRule::json};
    Setting<Hotkey> hotkeyHistory{m_storage, m_notify, "settings.hotkey.history", Hotkey{4, 0x1a0000}, LoadRule::json};
    Setting<EditorShortcutMap> editorShortcuts{m_storage, m_notify, "settings.hotkey.editor", EditorShortcuts::defaults(), LoadRule::json};
    Setting<CloudProvider> cloudProvider{m_storage, m_notify, "settings.cloud.provider", CloudProvider::none, LoadRule::string};
    Setting<QString> cloudAccountID{m_storage, m_notify, "settings.cloud.accountID", QString(), LoadRule::string};
    Setting<QString> cloudEndpoint{m_storage, m_notify, "settings.cloud.endpoint", QString(), LoadRule::string};
    Setting<QString> cloudRegion{m_storage, m_notify, "settings.cloud.region", QString(), LoadRule::string};
    Setting<QString> cloudBucket{m_storage, m_notify, "settings.cloud.bucket", QString(), LoadRule::string};
    Setting<QString> cloudKeyPrefix{m_storage, m_notify, "settings.cloud.keyPrefix", QString(), LoadRule::string};
    Setting<QString> cloudPublicBaseURL{m_storage, m_notify, "settings.cloud.publicBaseURL", QString(), LoadRule::string};

    // The eleven global shortcuts in the order a change is published.
    std::array<Setting<Hotkey> *, 11> globalHotkeys();

    // Start with the desktop session. Not in the settings file: the desktop's
    // autostart entry is the truth, read once at creation.
    bool launchAtLogin() const { return m_launchAtLogin; }
    void setLaunchAtLogin(bool enabled);

    // Cloud credentials live in their own store and are read only on demand, so
    // that starting the application never touches them (CloudCredentials).
    // Each assignment is kept at once, once they have been loaded.
    const QString &cloudAccessKeyID() const { return m_cloudCredentials.accessKeyID(); }
    const QString &cloudSecretAccessKey() const { return m_cloudCredentials.secretAccessKey(); }
    void setCloudAccessKeyID(const QString &value);
    void setCloudSecretAccessKey(const QString &value);
    void setCloudCredentials(const QString &accessKeyID, const QString &secretAccessKey);
    bool cloudCredentialsLoaded() const { return m_cloudCredentials.loaded(); }
    bool cloudCredentialsDenied() const { return m_cloudCredentials.denied(); }
    // False only when an old keyring refused to give them up; see CloudCredentials.
    bool loadCloudCredentials();
    // The credential file was written by another process.
    void reloadCloudCredentials();
    // Where the credentials are kept; by default the file in the data folder
    // and no keyring. The keychain must outlive the settings.
    void useCredentialStores(CredentialFile file, CredentialKeychain &keychain);
    const CredentialFile &credentialFile() const { return m_cloudCredentials.file(); }

    // The recorder binding of one editor shortcut.
    Hotkey editorShortcut(EditorShortcut shortcut) const;
    void setEditorShortcut(EditorShortcut shortcut, const Hotkey &hotkey);

    void resetShortcuts();
    // Reads the eleven global shortcuts and the editor shortcuts from the
    // store again (the file edited by hand); each that changed is published.
    void reloadShortcuts();
    void resetAppearance();

    void setSaveDirectory(const QString &path);
    SaveDirectoryAccess accessSaveDirectory() const;

Q_SIGNALS:
    // Any property that really changed, by its key.
    void changed(const QString &key);
    // One of the eleven global shortcuts really changed.
    void hotkeysChanged();

private:
    void publish(const QString &key);

    LoginItem &m_loginItem;
    bool m_launchAtLogin = false;
    NoCredentialKeychain m_noKeychain;
    CloudCredentials m_cloudCredentials{CredentialFile(), m_noKeychain};
};
