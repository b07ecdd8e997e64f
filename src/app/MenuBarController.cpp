#include "app/MenuBarController.h"

#include "app/TrayIcons.h"
#include "appbase/InProcessNotices.h"
#include "output/Notifying.h"
#include "settings/AppSettings.h"

#include <QAction>
#include <QActionGroup>
#include <QCursor>
#include <QLoggingCategory>
#include <QMenu>
#include <QTimer>

Q_LOGGING_CATEGORY(lcMenuBar, "glimpso.MenuBar", QtInfoMsg)

namespace {

// A menu shows its shortcut column from the text after a tab; the shortcut is
// only shown here, the hotkeys themselves are the HotkeyManager's.
QString withShortcut(const QString &title, const QString &shortcut)
{
    return shortcut.isEmpty() ? title : title + u'\t' + shortcut;
}

QString titleOf(const QAction *action)
{
    return action->text().section(u'\t', 0, 0);
}

template <typename F>
void run(const F &function)
{
    if (function)
        function();
}

} // namespace

MenuBarController::MenuBarController(Actions actions, AppSettings &settings, Notifying &notifier,
                                     TrayCheck trayAvailable, int graceMs, QObject *parent)
    : QObject(parent)
    , m_actions(std::move(actions))
    , m_trayAvailable(std::move(trayAvailable))
    , m_settings(settings)
    , m_notifier(notifier)
    , m_menu(std::make_unique<QMenu>())
{
    m_menu->setObjectName(QStringLiteral("glimpso tray menu"));
    buildTree();
    refreshShortcuts();
    observeSettings();
    buildTrayIcon(graceMs);
}

MenuBarController::~MenuBarController()
{
    qCInfo(lcMenuBar, "MenuBarController dealloc'd — icon will vanish");
    for (const QMetaObject::Connection &connection : std::as_const(m_connections))
        disconnect(connection);
}

QIcon MenuBarController::menuIcon(Lucide::Icon icon) const
{
    return Lucide(icon).icon(iconSize, iconStroke, m_menu->palette().color(QPalette::WindowText));
}

QMenu *MenuBarController::submenu(QMenu *parent, const QString &title, Lucide::Icon icon)
{
    QMenu *menu = parent->addMenu(menuIcon(icon), title);
    menu->setObjectName(title);
    return menu;
}

QAction *MenuBarController::item(QMenu *menu, const QString &title, Lucide::Icon icon, std::function<void()> run,
                                 Setting<Hotkey> *shortcut)
{
    QAction *action = menu->addAction(menuIcon(icon), title);
    connect(action, &QAction::triggered, this, [run = std::move(run)] {
        if (run)
            run();
    });
    if (shortcut)
        m_shortcutItems.append({action, {title, shortcut}});
    return action;
}

void MenuBarController::showFixedShortcut(QAction *action, const QString &title, const QString &shortcut)
{
    action->setText(withShortcut(title, shortcut));
}

void MenuBarController::buildTree()
{
    const auto record = [this](CaptureKind kind, int tag) {
        return [this, kind, tag] {
            if (m_actions.record)
                m_actions.record(kind, TrayActions::recordingArea(tag));
        };
    };

    QMenu *screenshot = submenu(m_menu.get(), QStringLiteral("Screenshot"), Lucide::scan);
    item(screenshot, QStringLiteral("Capture Region"), Lucide::scan, [this] {
        qCInfo(lcMenuBar, "menu: captureRegion clicked, statusItem.isVisible=%d", m_trayIcon && m_trayIcon->isVisible());
        if (m_actions.captureRegion)
            m_actions.captureRegion(false, CaptureIntent::image);
    }, &m_settings.hotkeyRegion);
    item(screenshot, QStringLiteral("Capture Window"), Lucide::appWindow, [this] { run(m_actions.captureWindow); }, &m_settings.hotkeyWindow);
    item(screenshot, QStringLiteral("Capture All Displays"), Lucide::monitor, [this] {
        qCInfo(lcMenuBar, "menu: captureAllDisplays clicked");
        if (m_actions.captureRegion)
            m_actions.captureRegion(true, CaptureIntent::image);
    }, &m_settings.hotkeyAllDisplays);
    screenshot->addSeparator();
    m_delayMenu = submenu(screenshot, QStringLiteral("Capture After Delay"), Lucide::timer);
    connect(m_delayMenu, &QMenu::aboutToShow, this, &MenuBarController::fillDelayMenu);

    item(m_menu.get(), QStringLiteral("Capture Text"), Lucide::scanText, [this] {
        if (m_actions.captureRegion)
            m_actions.captureRegion(false, CaptureIntent::text);
    }, &m_settings.hotkeyText);

    QMenu *gif = submenu(m_menu.get(), QStringLiteral("GIF"), Lucide::film);
    item(gif, QStringLiteral("Record Region"), Lucide::scan, record(CaptureKind::gif, 0), &m_settings.hotkeyGIF);
    item(gif, QStringLiteral("Record Window"), Lucide::appWindow, record(CaptureKind::gif, 1), &m_settings.hotkeyGIFWindow);
    item(gif, QStringLiteral("Record Screen"), Lucide::monitor, record(CaptureKind::gif, 2), &m_settings.hotkeyGIFScreen);
    QMenu *video = submenu(m_menu.get(), QStringLiteral("Video"), Lucide::video);
    item(video, QStringLiteral("Record Region"), Lucide::scan, record(CaptureKind::video, 0), &m_settings.hotkeyVideo);
    item(video, QStringLiteral("Record Window"), Lucide::appWindow, record(CaptureKind::video, 1), &m_settings.hotkeyVideoWindow);
    item(video, QStringLiteral("Record Screen"), Lucide::monitor, record(CaptureKind::video, 2), &m_settings.hotkeyVideoScreen);
    m_menu->addSeparator();

    item(m_menu.get(), QStringLiteral("Capture History"), Lucide::history, [this] { run(m_actions.showHistory); }, &m_settings.hotkeyHistory);
    m_editMenu = submenu(m_menu.get(), QStringLiteral("Edit Captures"), Lucide::squarePen);
    connect(m_editMenu, &QMenu::aboutToShow, this, &MenuBarController::fillEditMenu);
    item(m_menu.get(), QStringLiteral("Open Screenshots Folder"), Lucide::folderOpen, [this] { run(m_actions.openFolder); });
    m_menu->addSeparator();

    QAction *settings = item(m_menu.get(), QStringLiteral("Settings…"), Lucide::settings, [this] {
        qCInfo(lcMenuBar, "menu: settings opened");
        run(m_actions.openSettings);
    });
    showFixedShortcut(settings, QStringLiteral("Settings…"), QStringLiteral("Ctrl+,"));
    item(m_menu.get(), QStringLiteral("Check for Updates…"), Lucide::refresh, [this] { run(m_actions.checkForUpdates); });
    item(m_menu.get(), QStringLiteral("Report a Problem…"), Lucide::messageWarning, [this] { run(m_actions.reportProblem); });
    m_menu->addSeparator();
    QAction *quit = item(m_menu.get(), QStringLiteral("Quit glimpso"), Lucide::power, [this] { run(m_actions.quit); });
    showFixedShortcut(quit, QStringLiteral("Quit glimpso"), QStringLiteral("Ctrl+Q"));

    connect(m_menu.get(), &QMenu::aboutToShow, this, [] { qCInfo(lcMenuBar, "menu: opened"); });
}

void MenuBarController::fillDelayMenu()
{
    m_delayMenu->clear();
    const qint64 stored = m_settings.captureDelaySeconds();
    for (const qint64 seconds : delays) {
        QAction *action = m_delayMenu->addAction(QStringLiteral("%1 Seconds").arg(seconds));
        action->setData(seconds);
        action->setCheckable(true);
        action->setChecked(seconds == stored);
        connect(action, &QAction::triggered, this, [this, seconds] {
            if (m_actions.captureAfterDelay)
                m_actions.captureAfterDelay(seconds);
        });
    }
}

void MenuBarController::fillEditMenu()
{
    m_editMenu->clear();
    const EditMode current = m_settings.editMode();
    const QPair<QString, EditMode> choices[] = {{QStringLiteral("On Screen"), EditMode::onScreen},
                                                {QStringLiteral("In Editor Window"), EditMode::afterCapture}};
    for (const auto &[title, mode] : choices) {
        QAction *action = m_editMenu->addAction(title);
        action->setData(enumText(mode));
        action->setCheckable(true);
        action->setChecked(mode == current);
        connect(action, &QAction::triggered, this, [this, action] {
            if (const std::optional<EditMode> chosen = enumFromText<EditMode>(action->data().toString()))
                m_settings.editMode.set(*chosen);
        });
    }
}

void MenuBarController::refreshShortcuts()
{
    for (const auto &[action, row] : std::as_const(m_shortcutItems)) {
        const Hotkey hotkey = (*row.second)();
        action->setText(withShortcut(row.first, hotkey.isAssigned() ? hotkey.displayString() : QString()));
    }
}

void MenuBarController::observeSettings()
{
    m_connections << connect(&m_settings, &AppSettings::hotkeysChanged, this, &MenuBarController::refreshShortcuts);
    m_connections << connect(&InProcessNotices::instance(), &InProcessNotices::recordingChanged, this,
                             &MenuBarController::recordingChanged);
    m_connections << connect(&InProcessNotices::instance(), &InProcessNotices::hotkeyWillFire, this, [this] {
        // A hotkey pressed with the menu open closes the menu first.
        if (!m_settings.keepMenuOpenDuringCapture())
            m_menu->close();
    });
}

void MenuBarController::buildTrayIcon(int graceMs)
{
    m_trayIcon = std::make_unique<QSystemTrayIcon>();
    m_trayIcon->setIcon(TrayIcons::marqueeIcon(TrayIcons::desktopIsDark()));
    m_trayIcon->setToolTip(QStringLiteral("glimpso"));
    m_trayIcon->setContextMenu(m_menu.get());
    connect(m_trayIcon.get(), &QSystemTrayIcon::activated, this, &MenuBarController::activated);
    m_trayIcon->show();
    if (m_trayAvailable && m_trayAvailable()) {
        qCInfo(lcMenuBar, "status item created visible=%d", m_trayIcon->isVisible());
        return;
    }
    qCInfo(lcMenuBar, "no system tray yet: waiting %d ms for one", graceMs);
    QTimer::singleShot(graceMs, this, &MenuBarController::checkTray);
}

void MenuBarController::checkTray()
{
    if (m_trayAvailable && m_trayAvailable()) {
        qCInfo(lcMenuBar, "status item created visible=%d", m_trayIcon->isVisible());
        return;
    }
    qCInfo(lcMenuBar, "no system tray on this desktop: every menu item is a command (glimpso --help)");
    m_notifier.post(QStringLiteral("glimpso has no tray icon here"),
                    QStringLiteral("This desktop shows no system tray. Every menu item is a command: see "
                                   "glimpso --help."),
                    6.0, NoticeAction::none());
}

bool MenuBarController::recording() const
{
    return m_actions.isRecording && m_actions.isRecording();
}

void MenuBarController::recordingChanged()
{
    m_showsRecording = recording();
    const bool dark = TrayIcons::desktopIsDark();
    if (m_showsRecording) {
        m_menu->close();
        m_trayIcon->setContextMenu(nullptr);
        m_trayIcon->setIcon(TrayIcons::recordingIcon(dark));
        m_trayIcon->setToolTip(QStringLiteral("Stop recording"));
    } else {
        m_trayIcon->setContextMenu(m_menu.get());
        m_trayIcon->setIcon(TrayIcons::marqueeIcon(dark));
        setActivity(m_activity);
    }
}

void MenuBarController::setActivity(const QString &activity)
{
    m_activity = activity;
    if (m_showsRecording)
        return;
    m_trayIcon->setToolTip(activity.isEmpty() ? QStringLiteral("glimpso") : QStringLiteral("glimpso — ") + activity);
}

void MenuBarController::activated(QSystemTrayIcon::ActivationReason reason)
{
    qCInfo(lcMenuBar, "tray icon clicked (reason %d)", int(reason));
    if (recording()) {
        // During a recording the icon is a stop button, and no menu opens.
        if (reason != QSystemTrayIcon::MiddleClick && reason != QSystemTrayIcon::Unknown) {
            qCInfo(lcMenuBar, "tray click: stopping the recording");
            run(m_actions.stopRecording);
        }
        return;
    }
    // A left click opens the menu as the right click does; a second click
    // soon after the first is a click all the same.
    if ((reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick) && !m_menu->isVisible())
        m_menu->popup(QCursor::pos());
}

QAction *MenuBarController::findItem(const QString &title, QMenu *within) const
{
    const QMenu *menu = within ? within : m_menu.get();
    for (QAction *action : menu->actions()) {
        if (titleOf(action) == title)
            return action;
        if (action->menu())
            if (QAction *found = findItem(title, action->menu()))
                return found;
    }
    return nullptr;
}
