#pragma once

#include "appbase/CaptureIntent.h"
#include "appbase/CaptureKind.h"
#include "settings/Hotkey.h"

#include <QList>
#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <functional>
#include <map>
#include <optional>
#include <vector>

class AppSettings;
class CaptureCoordinator;
class GlobalKeyGrabber;
class QKeyEvent;

// Turns key presses anywhere on the desktop into captures. The eleven global
// shortcuts of the settings are grabbed through a GlobalKeyGrabber under fixed
// ids, taken again whenever one of them changes; Escape is taken only while
// the overlay is up, so that it reaches the overlay wherever the focus is and
// goes back to everyone else the moment the overlay is gone. Main thread only.
class HotkeyManager : public QObject
{
    Q_OBJECT

public:
    // The id each grab carries; any other number is ignored when pressed.
    enum class HotkeyID {
        region = 2,
        allDisplays = 3,
        escape = 4,
        text = 5,
        history = 6,
        gif = 7,
        video = 8,
        window = 9,
        gifWindow = 10,
        gifScreen = 11,
        videoWindow = 12,
        videoScreen = 13,
    };
    enum class RecordingTarget { area, window, screen };

    // What the hotkeys start. Each may be empty while its subsystem is not in
    // the build; its hotkey is then grabbed all the same and logs that nothing
    // acts on it.
    struct Actions
    {
        std::function<void(bool allDisplays, CaptureIntent intent)> captureRegion;
        std::function<void()> captureWindow;
        std::function<void()> toggleHistory;
        // A recording hotkey pressed during a recording stops it there.
        std::function<void(CaptureKind kind, RecordingTarget target, const QString &prompt)> startRecording;
    };

    // A combination the desktop refused, kept for the settings page to show.
    struct Failure
    {
        int id = 0;
        Hotkey hotkey;
        int status = 0;
        QString reason;
        friend bool operator==(const Failure &, const Failure &) = default;
    };

    HotkeyManager(
        Actions actions, AppSettings &settings, GlobalKeyGrabber &grabber, QObject *parent = nullptr);
    ~HotkeyManager() override;

    // The coordinator's entries for the capture hotkeys.
    static Actions coordinatorActions(CaptureCoordinator &coordinator);

    // Starts everything: the grabs, the key filter of glimpso's own windows,
    // and the subscriptions to the settings and the overlay. Once.
    void registerHotkeys();
    // Ends everything; called when the application quits.
    void unregisterHotkeys();

    // Gives every global shortcut back and takes the eleven again, in order:
    // region, all displays, text, window, GIF window, GIF screen, video
    // window, video screen, history, GIF, video.
    void registerAll();

    // Runs the action of `id`, as a press of its combination does.
    void fire(int id);

    // A key press seen by one of glimpso's own windows. While a popup menu of
    // glimpso holds the keyboard (and so keeps the grabs from firing) every
    // global shortcut is matched and fired as if grabbed; otherwise only
    // region and all displays, which then start without hotkeyWillFire.
    // True when it matched and the press is used up.
    bool matchAndFire(const Hotkey &pressed, bool popupOpen);

    // The ids held now, with their combinations.
    const std::map<int, Hotkey> &registered() const { return m_registered; }
    // The combinations the desktop refused at the last registration.
    const std::vector<Failure> &failures() const { return m_failures; }
    bool isRegistered() const { return m_started; }

    // The tray's menu: left open by closeOpenMenus, the tray decides itself.
    void setStatusMenu(QWidget *menu) { m_statusMenu = menu; }

    static QString settingName(HotkeyID id);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void grabOne(HotkeyID id, const Hotkey &hotkey);
    void ungrabOne(HotkeyID id);
    void grabLost(int id, int status, const QString &reason);
    void overlayPresented();
    void overlayDismissed();
    void closeOpenMenus();
    std::optional<Hotkey> settingHotkey(HotkeyID id) const;
    Hotkey pressedHotkey(const QKeyEvent &event) const;

    Actions m_actions;
    AppSettings &m_settings;
    GlobalKeyGrabber &m_grabber;
    std::map<int, Hotkey> m_registered;
    std::vector<Failure> m_failures;
    QList<QMetaObject::Connection> m_connections;
    QPointer<QWidget> m_statusMenu;
    bool m_started = false;
    bool m_overlayUp = false;
};
