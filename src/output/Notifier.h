#pragma once

#include "output/NotificationBackend.h"
#include "output/Notifying.h"
#include "settings/SettingsTab.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <exception>
#include <functional>
#include <map>

class AppSettings;
class DesktopOpener;
class SettingsStorage;
class Toasting;

// Everything glimpso tells the user goes through here. A desktop notification
// with buttons where a notification server answers; glimpso's own toast where
// none does or the server refuses. It also turns failures into a title, a
// message and a click action, and owns the progress toast. Main thread only.
class Notifier : public QObject, public Notifying
{
    Q_OBJECT

public:
    // Where a click leads that is neither a file nor a link. Each may be empty
    // while its window is not in the build; the click then does nothing.
    struct Routes {
        std::function<void(SettingsTab)> showSettings;
        std::function<void()> showUpdates;
        std::function<void()> reportProblem;
    };

    // A failure as the user reads it.
    struct ErrorNotice {
        QString title;
        QString body;
        NoticeAction action;
    };

    // Set once the user has been told that notifications are off; never cleared.
    static inline const QString deniedNoticeShownKey = QStringLiteral("notifications.deniedNoticeShown");
    // The notification kind of a capture file: "Open" and "Show in Folder".
    static inline const QString captureFileCategory = QStringLiteral("capture-file");
    static inline const QString openFileButton = QStringLiteral("open-file");
    static inline const QString revealFileButton = QStringLiteral("reveal-file");
    // A click on the notification itself.
    static inline const QString defaultButton = QStringLiteral("default");

    Notifier(AppSettings &settings, SettingsStorage &defaults, NotificationBackend &backend, Toasting &toast,
             DesktopOpener &desktop, QObject *parent = nullptr);
    ~Notifier() override;

    // At launch: finds out whether notifications can be shown, and if not,
    // says so once (onNotificationsOff), ever.
    void prepare();

    void post(const QString &title, const QString &body, double durationSeconds, const NoticeAction &action) override;
    void error(const AppError &error) override;
    // A failure of any other kind: "glimpso couldn't do that" with its text.
    void error(const std::exception &error);

    // A notification was clicked: `userInfo` as the notice carried it, and the
    // button's key (empty or "default" for the notification itself).
    void perform(const QVariantMap &userInfo, const QString &button);
    // A toast was clicked.
    void perform(const NoticeAction &action);

    // A toast that stands until the next notice replaces it (an upload or a
    // recording being finished). Every post and error clears it first.
    void showProgress(const QString &title, const QString &body, double seconds);
    // The standing progress toast with new words, in place; a new one with
    // `seconds` when none stands.
    void changeProgress(const QString &title, const QString &body, double seconds);
    bool showingProgress() const { return m_showingProgress; }
    void clearProgress();

    Routes routes;
    // Each failure shown, as "{title}: {message}", for problem reports.
    std::function<void(const QString &)> recordError;
    // Notifications are off, said once at a launch; the key is set before.
    std::function<void()> onNotificationsOff;

    // The pure parts, for tests and for the toasts of other windows.
    static ErrorNotice errorNotice(const AppError &error);
    static ErrorNotice errorNotice(const std::exception &error);
    // What a notification carries so that its click can be performed later.
    static QVariantMap userInfo(const NoticeAction &action);
    // "capture-file" for a file that can be opened or shown, else empty.
    static QString category(const NoticeAction &action);
    static NotificationBackend::Notification notification(const QString &title, const QString &body,
                                                          const NoticeAction &action, bool sound);
    // How long a toast stands: a clickable one at least four seconds.
    static double toastSeconds(const NoticeAction &action, double seconds);
    // Of a clicked desktop notification only "reveal", "open", "updates" and
    // "settings" are acted on; "report" works from a toast only.
    static QVariantMap clickedNotificationInfo(const QVariantMap &userInfo);

private:
    void sent(const NotificationBackend::SendResult &result, const QString &title, const QString &body,
              double seconds, const NoticeAction &action);
    void showToast(const QString &title, const QString &body, double seconds, const NoticeAction &action);
    void probed(bool available, const QString &who);
    void clicked(unsigned id, const QString &key);
    void openFile(const QString &path);

    AppSettings &m_settings;
    SettingsStorage &m_defaults;
    NotificationBackend &m_backend;
    Toasting &m_toast;
    DesktopOpener &m_desktop;
    bool m_showingProgress = false;
    // What each notification on screen does when clicked, by the server's id.
    std::map<unsigned, QVariantMap> m_onScreen;
};
