#pragma once

#include "app/CaptureCoordinator.h"
#include "app/CommandRouter.h"
#include "app/DesktopBackend.h"
#include "app/LaunchEnvironment.h"

#include <QObject>

struct CaptureVerb;

#include <functional>
#include <map>
#include <memory>

class AppSettings;
class CaptureCoordinator;
class HistoryStore;
class HangupNotifier;
class HotkeyManager;
class MenuBarController;
class DBusDesktopOpener;
class DBusNotificationBackend;
class HUDToast;
class Notifier;
class OutputService;
class ShutterSound;
class IniSettingsStorage;
class InstanceChannel;
class SingleInstance;
class TextRecognizer;
class TrayActions;
class WindowCommand;
class WindowPicker;
class KeychainStore;
class UploadCommands;
class UploadIndicator;
class UploadService;
class LiveAreaPicker;
class QtRecordingScheduler;
class RecordingCommands;
class RecordingCoordinator;
class RecordingRecovery;
struct RecordingBackend;

// Builds the long-lived objects in their fixed order once the application runs,
// and tears down what must go at the end. Owned by main for the life of the process.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    using LaunchFeature = std::function<void(const LaunchEnvironment::Request &)>;

    AppDelegate(AppSettings &settings, IniSettingsStorage &storage, SingleInstance &singleInstance,
                InstanceChannel &channel, QObject *parent = nullptr);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    void applicationWillTerminate();

    CommandRouter &commands() { return m_commands; }
    // Absent before launch has finished.
    HotkeyManager *hotkeys() { return m_hotkeys.get(); }
    // Subsystems that can be driven by an environment variable at launch add themselves here.
    void addLaunchFeature(LaunchEnvironment::Feature feature, LaunchFeature run);

private:
    void logDisplays() const;
    void prepareNotifier();
    void buildTrayActions();
    void buildMenuBar();
    void registerCommands();
    void buildCaptureCoordinator();
    void addWindowAndTextParts(CaptureCoordinator::Parts &parts);
    void buildUploads();
    void buildRecordingCoordinator();
    void recoverRecordings();
    void buildHotkeys();
    CommandRouter::Reply runCaptureVerb(const QStringList &arguments);
    CommandRouter::Reply runInteractiveCapture(const CaptureVerb &verb);
    void startCommandChannel();
    void runLaunchEnvironment();

    AppSettings &m_settings;
    IniSettingsStorage &m_storage;
    SingleInstance &m_singleInstance;
    InstanceChannel &m_channel;
    CommandRouter m_commands;
    std::map<LaunchEnvironment::Feature, LaunchFeature> m_launchFeatures;

    std::unique_ptr<HUDToast> m_toast;
    std::unique_ptr<DBusNotificationBackend> m_notificationServer;
    std::unique_ptr<DBusDesktopOpener> m_opener;
    std::unique_ptr<Notifier> m_notifier;
    DesktopBackend m_desktop;
    std::unique_ptr<OutputService> m_output;
    std::unique_ptr<ShutterSound> m_shutter;
    std::unique_ptr<HistoryStore> m_history;
    std::unique_ptr<WindowPicker> m_windowPicker;
    std::unique_ptr<TextRecognizer> m_recognizer;
    std::unique_ptr<KeychainStore> m_keychain;
    std::unique_ptr<UploadService> m_uploads;
    std::unique_ptr<UploadIndicator> m_uploadIndicator;
    std::unique_ptr<UploadCommands> m_uploadCommands;
    std::unique_ptr<CaptureCoordinator> m_coordinator;
    std::unique_ptr<WindowCommand> m_windowCommand;
    std::unique_ptr<HotkeyManager> m_hotkeys;
    std::unique_ptr<TrayActions> m_trayActions;
    std::unique_ptr<MenuBarController> m_menuBar;
    std::unique_ptr<HangupNotifier> m_hangup;
    std::unique_ptr<RecordingBackend> m_recordingBackend;
    std::unique_ptr<QtRecordingScheduler> m_recordingScheduler;
    std::unique_ptr<LiveAreaPicker> m_areaPicker;
    std::unique_ptr<RecordingCoordinator> m_recorder;
    std::unique_ptr<RecordingCommands> m_recordingCommands;
    std::unique_ptr<RecordingRecovery> m_recovery;
};
