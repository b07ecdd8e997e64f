#include "app/AppDelegate.h"

#include "acquire/DesktopSpace.h"
#include "app/CaptureCoordinator.h"
#include "history/HistoryStore.h"
#include "app/CaptureLaunchTests.h"
#include "app/CaptureVerb.h"
#include "app/HangupNotifier.h"
#include "app/HotkeyManager.h"
#include "app/MenuBarController.h"
#include "app/NotifyLaunchTest.h"
#include "app/RecordingBackend.h"
#include "app/RecordingCommands.h"
#include "app/RecordingCoordinator.h"
#include "app/RecordingRecovery.h"
#include "recording/FrameLogSink.h"
#include "recording/HostClock.h"
#include "recording/LiveAreaPicker.h"
#include "recording/RecordingChromeWidgets.h"
#include "recording/RecordingScheduler.h"
#include "recording/VideoRecorder.h"
#include "platform/pulse/PulseModule.h"
#include "app/ScriptedRegionSelector.h"
#include "app/TrayActions.h"
#include "app/UploadCommands.h"
#include "app/UploadIndicator.h"
#include "app/WelcomeNotice.h"
#include "app/WindowCommand.h"
#include "acquire/WindowCapture.h"
#include "overlay/WindowPicker.h"
#include "recognize/TextRecognizer.h"
#include "cloud/UploadService.h"
#include "platform/dbus/KeychainStore.h"
#include "appbase/InProcessNotices.h"
#include "overlay/RegionSelector.h"
#include "platform/dbus/DBusDesktopOpener.h"
#include "platform/dbus/DBusNotificationBackend.h"
#include "toolbars/EditorToolbar.h"
#include "appbase/SingleInstance.h"
#include "output/HUDToast.h"
#include "output/NotificationsOffAlert.h"
#include "output/Notifier.h"
#include "output/OutputService.h"
#include "output/ShutterSound.h"
#include "settings/AppSettings.h"
#include "settings/IniSettingsStorage.h"

#include <QClipboard>
#include <QLocale>
#include <QMenu>
#include <QEventLoop>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>
#include <QStringList>
#include <QTimer>

Q_LOGGING_CATEGORY(lcAppDelegate, "glimpso.AppDelegate", QtInfoMsg)

AppDelegate::AppDelegate(AppSettings &settings, IniSettingsStorage &storage, SingleInstance &singleInstance,
                         InstanceChannel &channel, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_storage(storage)
    , m_singleInstance(singleInstance)
    , m_channel(channel)
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    qCInfo(lcAppDelegate) << "glimpso launched";
    logDisplays();

    // Before anything else is built: a copy that is replaced must not have shown anything.
    m_singleInstance.claim();
    m_singleInstance.onHandOff([] { qCInfo(lcAppDelegate) << "another launch handed off to this copy"; });

    prepareNotifier();
    buildUploads();
    buildCaptureCoordinator();
    buildRecordingCoordinator();
    recoverRecordings();
    buildTrayActions();
    buildHotkeys();
    buildMenuBar();
    registerCommands();
    startCommandChannel();
    WelcomeNotice::showOnce(m_storage, m_settings, *m_notifier);

    // The environment's features run once the launch turn is over.
    QTimer::singleShot(0, this, [this] { runLaunchEnvironment(); });
}

void AppDelegate::logDisplays() const
{
    // Problem reports start from what the desktop looked like.
    QStringList displays;
    for (const QScreen *screen : QGuiApplication::screens()) {
        const QRect g = screen->geometry();
        displays << QStringLiteral("%1 %2x%3+%4+%5@%6")
                        .arg(screen->name())
                        .arg(g.width())
                        .arg(g.height())
                        .arg(g.x())
                        .arg(g.y())
                        .arg(screen->devicePixelRatio());
    }
    qCInfo(lcAppDelegate, "%lld %s: %s", qlonglong(displays.size()), displays.size() == 1 ? "display" : "displays",
           qUtf8Printable(displays.join(u", ")));
}

void AppDelegate::prepareNotifier()
{
    m_toast = std::make_unique<HUDToast>();
    m_notificationServer = std::make_unique<DBusNotificationBackend>();
    m_opener = std::make_unique<DBusDesktopOpener>();
    m_notifier = std::make_unique<Notifier>(m_settings, m_storage, *m_notificationServer, *m_toast, *m_opener);
    m_notifier->onNotificationsOff = [] {
        qCInfo(lcAppDelegate, "telling the user once that notifications are off");
        NotificationsOffAlert::show();
    };
    m_notifier->prepare();
    addLaunchFeature(LaunchEnvironment::Feature::testNotify, [this](const LaunchEnvironment::Request &request) {
        NotifyLaunchTest::run(request.value, *m_notifier);
    });
}

void AppDelegate::buildTrayActions()
{
    m_trayActions = std::make_unique<TrayActions>(*m_coordinator, m_settings, *m_notifier, *m_opener);
    m_trayActions->setRecorder(m_recorder.get());
    m_trayActions->registerCommands(m_commands);
    m_recordingCommands->registerCommands(m_commands);
    m_notifier->routes.showSettings = [this](SettingsTab tab) { m_trayActions->openSettings(tab); };
    m_notifier->routes.showUpdates = [this] { m_trayActions->checkForUpdates(); };
    m_notifier->routes.reportProblem = [this] { m_trayActions->reportProblem(); };
}

void AppDelegate::buildMenuBar()
{
    TrayActions &tray = *m_trayActions;
    MenuBarController::Actions actions;
    actions.captureRegion = [this](bool allDisplays, CaptureIntent intent) {
        m_coordinator->captureRegion(allDisplays, intent);
    };
    actions.captureWindow = [&tray] { tray.captureWindow(); };
    actions.captureAfterDelay = [&tray](qint64 seconds) { tray.captureAfterDelay(seconds); };
    actions.record = [&tray](CaptureKind kind, TrayActions::RecordingArea area) { tray.record(kind, area); };
    actions.showHistory = [&tray] { tray.showHistory(); };
    actions.openFolder = [&tray] { tray.openFolder(); };
    actions.openSettings = [&tray] { tray.openSettings(); };
    actions.checkForUpdates = [&tray] { tray.checkForUpdates(); };
    actions.reportProblem = [&tray] { tray.reportProblem(); };
    actions.quit = [] { QCoreApplication::quit(); };
    actions.isRecording = [this] { return m_recorder->isRecording(); };
    actions.stopRecording = [this] { m_recorder->stopRecording(); };
    m_menuBar = std::make_unique<MenuBarController>(std::move(actions), m_settings, *m_notifier,
                                                    &QSystemTrayIcon::isSystemTrayAvailable);
    m_hotkeys->setStatusMenu(m_menuBar->menu());
}

void AppDelegate::buildHotkeys()
{
    if (const QString why = m_desktop.keys->unavailableReason(); !why.isEmpty()) {
        qCWarning(lcAppDelegate, "global shortcuts are off: %s; they still work in glimpso's own windows, and "
                                 "every action is a command (glimpso region, glimpso all) for the desktop's "
                                 "shortcut settings", qUtf8Printable(why));
    }
    HotkeyManager::Actions hotkeyActions = HotkeyManager::coordinatorActions(*m_coordinator);
    hotkeyActions.startRecording = [this](CaptureKind kind, HotkeyManager::RecordingTarget target, const QString &) {
        m_recorder->record(kind, RecordingCoordinator::Area(int(target)));
    };
    m_hotkeys = std::make_unique<HotkeyManager>(std::move(hotkeyActions), m_settings, *m_desktop.keys);
    m_hotkeys->registerHotkeys();

    // The settings file edited by hand takes effect on SIGHUP, as daemons do.
    m_hangup = std::make_unique<HangupNotifier>();
    m_hangup->onHangup = [this] {
        qCInfo(lcAppDelegate, "hangup signal: reading the shortcuts from the settings file again");
        m_settings.reloadShortcuts();
    };
}

void AppDelegate::applicationWillTerminate()
{
    // Only the hotkeys are given back; a recording in progress is left to
    // the next launch's recovery.
    if (m_hotkeys)
        m_hotkeys->unregisterHotkeys();
    // Leave the bus first, so a new launch in these last moments starts afresh
    // instead of handing off to a copy that is going away.
    m_channel.withdraw();
}

void AppDelegate::addLaunchFeature(LaunchEnvironment::Feature feature, LaunchFeature run)
{
    m_launchFeatures[feature] = std::move(run);
}

void AppDelegate::registerCommands()
{
    m_commands.add(QStringLiteral("quit"), [](const QStringList &) {
        // Answer first; the quit follows once the reply is on its way.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        return CommandRouter::Reply{};
    });
    // The router hands over the arguments after the verb.
    m_commands.add(QStringLiteral("region"), [this](const QStringList &arguments) {
        return runCaptureVerb(QStringList{QStringLiteral("region")} + arguments);
    });
    m_commands.add(QStringLiteral("all"), [this](const QStringList &arguments) {
        return runCaptureVerb(QStringList{QStringLiteral("all")} + arguments);
    });
    m_commands.add(QStringLiteral("text"), [this](const QStringList &arguments) {
        return runCaptureVerb(QStringList{QStringLiteral("text")} + arguments);
    });
    m_windowCommand = std::make_unique<WindowCommand>(*m_coordinator, m_desktop.windows.get(), *m_desktop.screens,
                                                      QCoreApplication::applicationPid());
    m_commands.add(QStringLiteral("window"),
                   [this](const QStringList &arguments) { return m_windowCommand->run(arguments); });
    m_commands.add(QStringLiteral("settings-path"), [this](const QStringList &) {
        return CommandRouter::Reply{0, m_storage.filePath() + u'\n', {}};
    });
    m_uploadCommands->registerCommands(m_commands);
}

void AppDelegate::buildUploads()
{
    // The keyring is only looked into when an upload first needs the keys.
    m_keychain = std::make_unique<KeychainStore>();
    m_settings.useCredentialStores(CredentialFile(), *m_keychain);
    UploadService::Parts parts{m_settings, {}, {}, {}};
    parts.copyLink = [](const QString &link) { QGuiApplication::clipboard()->setText(link); };
    m_uploads = std::make_unique<UploadService>(std::move(parts));
    m_uploadIndicator = std::make_unique<UploadIndicator>(*m_uploads, *m_notifier, [this](const QString &activity) {
        if (m_menuBar)
            m_menuBar->setActivity(activity);
    });
    m_uploadCommands = std::make_unique<UploadCommands>(*m_uploads, m_settings, *m_notifier);
}

void AppDelegate::buildCaptureCoordinator()
{
    m_desktop = DesktopBackend::load();
    qCInfo(lcAppDelegate, "desktop backend: %s", qUtf8Printable(m_desktop.name));
    m_output = std::make_unique<OutputService>(m_settings, *m_notifier);
    m_shutter = std::make_unique<ShutterSound>(m_settings);
    m_history = std::make_unique<HistoryStore>(m_settings);
    m_history->onNotice = [this](const QString &title, const QString &body, double seconds) {
        m_notifier->post(title, body, seconds, NoticeAction::none());
    };

    CaptureCoordinator::Parts parts{m_settings,  *m_desktop.capture, *m_output,
                                    *m_notifier, *m_desktop.screens, *m_desktop.focus};
    parts.note = [](const QString &sentence) { qCInfo(lcAppDelegate, "diary: %s", qUtf8Printable(sentence)); };
    parts.playShutter = [this] { m_shutter->play(); };
    parts.copyTextToClipboard = [](const QString &text) { QGuiApplication::clipboard()->setText(text); };
    parts.addHistoryFile = [this](const QString &path) { m_history->addFile(path); };
    parts.addHistoryText = [this](const QString &text) { m_history->addText(text); };
    parts.upload = [this](const QImage &image, const QString &savedPath) {
        return m_uploads->upload(image, savedPath).then(
            [](const UploadService::UploadResult &result) { return result.url; });
    };
    parts.makeSelector = [this](const QList<ScreenSnapshot> &snapshots, CaptureIntent intent,
                                std::function<void(const RegionResult &)> completion) {
        RegionSelector::Options options;
        options.intent = intent;
        options.makeToolbar = [this](std::function<void(const EditorAction &)> handler) {
            return std::make_unique<EditorToolbar>(true, std::move(handler), m_settings);
        };
        return std::make_shared<RegionSelector>(snapshots, m_settings, std::move(options), std::move(completion));
    };
    addWindowAndTextParts(parts);
    m_coordinator = std::make_unique<CaptureCoordinator>(std::move(parts));
}

void AppDelegate::addWindowAndTextParts(CaptureCoordinator::Parts &parts)
{
    // The models are loaded at the first reading (or when a text capture
    // begins) and kept.
    m_recognizer = std::make_unique<TextRecognizer>(QLocale::system().uiLanguages());
    qCInfo(lcAppDelegate, "text recognition languages: %s", qUtf8Printable(m_recognizer->languages()));
    parts.prepareRecognition = [this] { m_recognizer->warmUp(); };
    addLaunchFeature(LaunchEnvironment::Feature::testOCR, [this](const LaunchEnvironment::Request &request) {
        CaptureLaunchTests::readText(request.value, *m_recognizer);
    });
    parts.recognize = [this](const QImage &image) {
        return m_recognizer->recognize(image).then([](const TextRecognizer::Result &result) {
            return CaptureCoordinator::RecognizedText{result.text, result.code};
        });
    };
    if (!m_desktop.windows || !m_desktop.windowGrabber)
        return;
    m_windowPicker = std::make_unique<WindowPicker>(*m_desktop.windows, *m_desktop.capture, *m_desktop.screens,
                                                    m_settings, QCoreApplication::applicationPid());
    parts.pickWindow = [this](CaptureCoordinator::PickCompletion done) {
        m_windowPicker->pick([done](const std::optional<WindowTarget> &target, Qt::KeyboardModifiers modifiers) {
            done(target ? std::optional<std::uint32_t>(target->windowID) : std::nullopt,
                 modifiers.testFlag(Qt::ShiftModifier));
        });
    };
    parts.captureWindow = [this](std::uint32_t id, const CaptureCoordinator::WindowCaptureOptions &options,
                                 bool afterPicker) {
        m_desktop.windowGrabber->prepare();
        return WindowCapture::capture(*m_desktop.windowGrabber, id, options, afterPicker);
    };
    addLaunchFeature(LaunchEnvironment::Feature::testWindow, [this](const LaunchEnvironment::Request &request) {
        CaptureLaunchTests::captureWindow(request.value, request.partner, *m_desktop.windows,
                                          *m_desktop.windowGrabber, QCoreApplication::applicationPid());
    });
}

void AppDelegate::buildRecordingCoordinator()
{
    m_recordingBackend = std::make_unique<RecordingBackend>(RecordingBackend::load());
    m_recordingScheduler = std::make_unique<QtRecordingScheduler>();
    const std::function<bool()> translucent = m_recordingBackend->translucentWindows;
    LiveAreaPicker::Parts pickerParts;
    pickerParts.translucent = translucent;
    m_areaPicker = std::make_unique<LiveAreaPicker>(std::move(pickerParts));

    RecordingCoordinator::Parts parts{m_settings, *m_notifier, *m_desktop.focus, *m_areaPicker, {}, {}};
    parts.makeSession = [this, translucent](const QRectF &rect, const RecordingScreen &screen,
                                            const RecordingConfig &config, std::shared_ptr<RecordingSink> sink,
                                            RecordingSession::Completion completion) {
        RecordingSession::Parts session{std::make_shared<RecordingChromeWidgets>(translucent && translucent()),
                                        *m_recordingScheduler,
                                        HostClock::system(),
                                        *m_notifier,
                                        m_recordingBackend->makeStream,
                                        m_recordingBackend->makeWatches,
                                        {}};
        return std::make_unique<RecordingSession>(rect, screen, config, std::move(sink), std::move(completion),
                                                  std::move(session));
    };
    parts.sinks[CaptureKind::video] = [](const QSize &size, const RecordingConfig &config) {
        VideoRecorder::Options options;
        options.width = size.width();
        options.height = size.height();
        options.framesPerSecond = config.framesPerSecond;
        options.codec = config.compatibleCodec ? videowriting::VideoWriter::Codec::h264
                                               : videowriting::VideoWriter::Codec::hevc;
        options.systemAudio = config.systemAudio;
        options.microphone = config.microphone;
        return std::make_shared<VideoRecorder>(options, VideoRecorder::WriterFactory{},
                                               [](videowriting::SoundSource::Kind kind) {
                                                   return PulseModule::makeSource(kind);
                                               });
    };
    // GLIMPSO_TEST_FRAMES=FOLDER: every recording keeps its frames' log
    // there instead of a file of its kind (GLIMPSO_TEST_FRAMES_EVERY=N keeps
    // every Nth frame as a picture).
    const QString frameLog = qEnvironmentVariable("GLIMPSO_TEST_FRAMES");
    if (!frameLog.isEmpty()) {
        const int every = qEnvironmentVariableIntValue("GLIMPSO_TEST_FRAMES_EVERY");
        const RecordingCoordinator::SinkFactory logSink = [frameLog, every](const QSize &, const RecordingConfig &) {
            return std::make_shared<FrameLogSink>(frameLog, every);
        };
        parts.sinks[CaptureKind::gif] = logSink;
        parts.sinks[CaptureKind::video] = logSink;
    }
    if (m_windowPicker)
        parts.pickWindow = [this](RecordingCoordinator::WindowPickCompletion done) {
            m_windowPicker->pick([done](const std::optional<WindowTarget> &target, Qt::KeyboardModifiers) {
                done(target ? std::optional<QRectF>(target->frame) : std::nullopt);
            });
        };
    parts.isCapturing = [this] { return m_coordinator->isCapturing(); };
    parts.setCapturing = [this](bool capturing) { m_coordinator->setCapturing(capturing); };
    parts.hasCaptureAccess = [this] { return m_desktop.screens->hasCaptureAccess(); };
    parts.requestCaptureAccess = [this] { m_desktop.screens->requestCaptureAccess(); };
    parts.saveFile = [this](const QString &path, CaptureKind kind) { return m_output->saveFile(path, kind); };
    parts.copyFile = [this](const QString &path, CaptureKind kind) { m_output->copyFile(path, kind); };
    parts.addHistoryFile = [this](const QString &path) { m_history->addFile(path); };
    parts.note = [](const QString &sentence) { qCInfo(lcAppDelegate, "diary: %s", qUtf8Printable(sentence)); };
    m_recorder = std::make_unique<RecordingCoordinator>(std::move(parts));
    m_recordingCommands = std::make_unique<RecordingCommands>(*m_recorder);
    qCInfo(lcAppDelegate, "recording backend: %s", qUtf8Printable(m_recordingBackend->name));
}

CommandRouter::Reply AppDelegate::runCaptureVerb(const QStringList &arguments)
{
    QString error;
    const std::optional<CaptureVerb> verb = CaptureVerb::parse(arguments, &error);
    if (!verb)
        return {2, {}, error};
    if (m_coordinator->isCapturing())
        return {1, {}, QStringLiteral("glimpso: another capture is in progress")};
    if (verb->interactive)
        return runInteractiveCapture(*verb);

    std::optional<QRectF> rect;
    if (verb->rect) {
        const QScreen *primary = QGuiApplication::primaryScreen();
        rect = DesktopSpace(primary ? primary->geometry() : QRect()).toGlobal(QRectF(*verb->rect));
    }
    const bool text = verb->intent == CaptureIntent::text;
    const EditorAction action = text                                        ? EditorAction::copyText()
                                : verb->output == CaptureVerb::Output::save ? EditorAction::save()
                                                                            : EditorAction::copy();
    auto selector = [rect, action](const QList<ScreenSnapshot> &snapshots, CaptureIntent,
                                   std::function<void(const RegionResult &)> completion) {
        return std::make_shared<ScriptedRegionSelector>(snapshots, rect, action, std::move(completion));
    };

    // The answer waits for the picture to be out, so that a script finds the
    // file and the clipboard ready when the command returns.
    QEventLoop loop;
    CommandRouter::Reply reply{1, {}, QStringLiteral("glimpso: the capture did not finish")};
    const auto connection = connect(m_coordinator.get(), &CaptureCoordinator::regionFlowEnded, &loop,
                                    [&reply, &loop, text](const QString &path, const QString &failure) {
                                        if (!failure.isEmpty()) {
                                            reply = {1, {}, QStringLiteral("glimpso: ") + failure};
                                            loop.quit();
                                        } else if (!text) {
                                            reply = {0, path.isEmpty() ? QString() : path + u'\n', {}};
                                            loop.quit();
                                        }
                                    });
    // A reading answers with what it put on the clipboard.
    const auto read = connect(m_coordinator.get(), &CaptureCoordinator::textRead, &loop,
                              [&reply, &loop, text](const QString &copied) {
                                  if (!text)
                                      return;
                                  reply = copied.isEmpty()
                                      ? CommandRouter::Reply{1, {}, QStringLiteral("glimpso: no text found")}
                                      : CommandRouter::Reply{0, copied + u'\n', {}};
                                  loop.quit();
                              });
    // Snapshots of every display, so that a rectangle across displays comes out whole.
    m_coordinator->captureRegion(true, verb->intent, selector);
    QTimer::singleShot(55000, &loop, &QEventLoop::quit);
    loop.exec();
    disconnect(connection);
    disconnect(read);
    return reply;
}

CommandRouter::Reply AppDelegate::runInteractiveCapture(const CaptureVerb &verb)
{
    // The command returns once the overlay is up (or the capture could not
    // start); what the user then does with it is the overlay's business.
    QEventLoop loop;
    CommandRouter::Reply reply{1, {}, QStringLiteral("glimpso: the overlay did not come up")};
    const auto presented = connect(&InProcessNotices::instance(), &InProcessNotices::overlayDidPresent, &loop,
                                   [&reply, &loop] {
                                       reply = {0, {}, {}};
                                       loop.quit();
                                   });
    const auto ended = connect(m_coordinator.get(), &CaptureCoordinator::regionFlowEnded, &loop,
                               [&reply, &loop](const QString &, const QString &failure) {
                                   reply = failure.isEmpty() ? CommandRouter::Reply{0, {}, {}}
                                                             : CommandRouter::Reply{1, {}, QStringLiteral("glimpso: ") + failure};
                                   loop.quit();
                               });
    m_coordinator->captureRegion(verb.allDisplays, verb.intent);
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    loop.exec();
    disconnect(presented);
    disconnect(ended);
    return reply;
}

void AppDelegate::startCommandChannel()
{
    if (!m_channel.serveCommands([this](const QStringList &arguments) { return m_commands.handle(arguments); }))
        qCWarning(lcAppDelegate) << "the command line cannot reach this copy over" << m_channel.name();
}

void AppDelegate::runLaunchEnvironment()
{
    for (const LaunchEnvironment::Request &request : LaunchEnvironment::readProcessEnvironment()) {
        const auto it = m_launchFeatures.find(request.feature);
        if (it == m_launchFeatures.end()) {
            qCDebug(lcAppDelegate) << LaunchEnvironment::variableName(request.feature)
                                   << "is set, but nothing in this build acts on it";
            continue;
        }
        it->second(request);
    }
}

void AppDelegate::recoverRecordings()
{
    // Recordings that a crash cut off come back in the background; the launch
    // doesn't wait for them.
    const QStringList leftovers = VideoRecorder::leftovers();
    if (leftovers.isEmpty())
        return;
    qCInfo(lcAppDelegate, "%lld unfinished recordings to recover", static_cast<long long>(leftovers.size()));
    m_recovery = std::make_unique<RecordingRecovery>(*m_output, *m_notifier,
                                                     [this](const QString &path) { m_history->addFile(path); });
    QTimer::singleShot(0, this, [this, leftovers] { m_recovery->recover(leftovers); });
}
