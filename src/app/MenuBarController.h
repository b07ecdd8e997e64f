#pragma once

#include "app/TrayActions.h"
#include "appui/Lucide.h"
#include "appbase/CaptureIntent.h"
#include "appbase/CaptureKind.h"
#include "settings/Hotkey.h"
#include "settings/Setting.h"

#include <QList>
#include <QMetaObject>
#include <QObject>
#include <QPair>
#include <QSystemTrayIcon>

#include <functional>
#include <memory>

class AppSettings;
class Notifying;
class QAction;
class QMenu;

// glimpso's one permanent presence: the tray icon and its menu. The menu shows
// each item's global shortcut; during a recording the icon turns into a stop
// button and a click on it stops the recording. Where the desktop has no tray,
// it says so once, and every item stays reachable as a command. Main thread only.
class MenuBarController : public QObject
{
    Q_OBJECT

public:
    // What the items do. Each may be empty while its subsystem is missing.
    struct Actions {
        std::function<void(bool allDisplays, CaptureIntent intent)> captureRegion;
        std::function<void()> captureWindow;
        std::function<void(qint64 seconds)> captureAfterDelay;
        std::function<void(CaptureKind kind, TrayActions::RecordingArea area)> record;
        std::function<void()> showHistory;
        std::function<void()> openFolder;
        std::function<void()> openSettings;
        std::function<void()> checkForUpdates;
        std::function<void()> reportProblem;
        std::function<void()> quit;
        // Whether a recording runs now, and how to stop it.
        std::function<bool()> isRecording;
        std::function<void()> stopRecording;
    };

    // The delays offered by "Capture After Delay", in seconds.
    static constexpr qint64 delays[] = {3, 5, 10};

    // Whether the desktop shows a tray now (QSystemTrayIcon::isSystemTrayAvailable
    // in the application; tests pass their own answer).
    using TrayCheck = std::function<bool()>;

    // A tray missing at start may come a little later (a panel that starts
    // after glimpso at login): only after this long is its absence told.
    static constexpr int trayGraceMs = 5000;

    MenuBarController(Actions actions, AppSettings &settings, Notifying &notifier, TrayCheck trayAvailable,
                      int graceMs = trayGraceMs, QObject *parent = nullptr);
    ~MenuBarController() override;

    QMenu *menu() const { return m_menu.get(); }
    QMenu *delayMenu() const { return m_delayMenu; }
    QMenu *editMenu() const { return m_editMenu; }
    // Made at start in any case; it shows once the desktop has a tray.
    QSystemTrayIcon *trayIcon() const { return m_trayIcon.get(); }
    bool showsRecording() const { return m_showsRecording; }

    // Menu icons: Lucide shapes of this size and stroke, in the menu's text colour.
    static constexpr qreal iconSize = 15;
    static constexpr qreal iconStroke = 1.75;

    // Sets each item's shown shortcut from the settings.
    void refreshShortcuts();
    // The icon's role follows whether a recording runs.
    void recordingChanged();
    // What glimpso is busy with ("Uploading 42%"), shown in the icon's
    // tooltip while no recording runs; empty when nothing.
    void setActivity(const QString &activity);
    // Fill the two late menus from the stored values; each runs when its menu opens.
    void fillDelayMenu();
    void fillEditMenu();
    // A click on the tray icon.
    void activated(QSystemTrayIcon::ActivationReason reason);

    // An item by its title, searched through the submenus; for tests and the e2e log.
    QAction *findItem(const QString &title, QMenu *within = nullptr) const;

private:
    void buildTree();
    QMenu *submenu(QMenu *parent, const QString &title, Lucide::Icon icon);
    QAction *item(QMenu *menu, const QString &title, Lucide::Icon icon, std::function<void()> run,
                  Setting<Hotkey> *shortcut = nullptr);
    QIcon menuIcon(Lucide::Icon icon) const;
    void showFixedShortcut(QAction *action, const QString &title, const QString &shortcut);
    void observeSettings();
    void buildTrayIcon(int graceMs);
    void checkTray();
    bool recording() const;

    Actions m_actions;
    TrayCheck m_trayAvailable;
    AppSettings &m_settings;
    Notifying &m_notifier;
    std::unique_ptr<QMenu> m_menu;
    QMenu *m_delayMenu = nullptr;
    QMenu *m_editMenu = nullptr;
    std::unique_ptr<QSystemTrayIcon> m_trayIcon;
    // Each item that shows a global shortcut, with its title and setting.
    QList<QPair<QAction *, QPair<QString, Setting<Hotkey> *>>> m_shortcutItems;
    QList<QMetaObject::Connection> m_connections;
    bool m_showsRecording = false;
    QString m_activity;
};
