#include "output/Notifier.h"

#include "output/DesktopOpener.h"
#include "output/Toasting.h"
#include "settings/AppSettings.h"
#include "settings/SettingsStorage.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QUrl>

#include <algorithm>

Q_LOGGING_CATEGORY(lcNotifier, "glimpso.Notifier", QtInfoMsg)

namespace {

const QString couldNotDoThat = QStringLiteral("glimpso couldn't do that");
const QString uploadDidNotWork = QStringLiteral("Upload didn't work");

} // namespace

Notifier::Notifier(AppSettings &settings, SettingsStorage &defaults, NotificationBackend &backend, Toasting &toast,
                   DesktopOpener &desktop, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_defaults(defaults)
    , m_backend(backend)
    , m_toast(toast)
    , m_desktop(desktop)
{
    QPointer<Notifier> self(this);
    m_backend.onClicked = [self](unsigned id, const QString &key) {
        if (self)
            self->clicked(id, key);
    };
    m_backend.onClosed = [self](unsigned id) {
        if (self)
            self->m_onScreen.erase(id);
    };
}

Notifier::~Notifier()
{
    m_backend.onClicked = {};
    m_backend.onClosed = {};
}

void Notifier::prepare()
{
    // Buttons travel with each notification here, so there is no category to
    // register beforehand; what is left is to learn whether anyone listens.
    QPointer<Notifier> self(this);
    m_backend.probe([self](bool available, const QString &who) {
        if (self)
            self->probed(available, who);
    });
}

void Notifier::probed(bool available, const QString &who)
{
    if (available) {
        qCInfo(lcNotifier, "notifications go to %s", qUtf8Printable(who));
        return;
    }
    qCInfo(lcNotifier, "no notifications on this desktop (%s): notices show as glimpso's own toasts",
           qUtf8Printable(who));
    if (m_defaults.value(deniedNoticeShownKey).toBool())
        return;
    m_defaults.setValue(deniedNoticeShownKey, true);
    if (onNotificationsOff)
        onNotificationsOff();
}

void Notifier::post(const QString &title, const QString &body, double durationSeconds, const NoticeAction &action)
{
    clearProgress();
    qCInfo(lcNotifier, "notice: %s — %s", qUtf8Printable(title), qUtf8Printable(body));
    QPointer<Notifier> self(this);
    m_backend.send(notification(title, body, action, m_settings.notificationSound()),
                   [self, title, body, durationSeconds, action](const NotificationBackend::SendResult &result) {
                       if (self)
                           self->sent(result, title, body, durationSeconds, action);
                   });
}

void Notifier::sent(const NotificationBackend::SendResult &result, const QString &title, const QString &body,
                    double seconds, const NoticeAction &action)
{
    using Status = NotificationBackend::SendResult::Status;
    switch (result.status) {
    case Status::sent:
        m_onScreen[result.id] = userInfo(action);
        return;
    case Status::noServer:
        qCInfo(lcNotifier, "no notification server (%s): showing a toast", qUtf8Printable(result.detail));
        break;
    case Status::failed:
        qCCritical(lcNotifier, "notification failed: %s", qUtf8Printable(result.detail));
        break;
    }
    showToast(title, body, seconds, action);
}

void Notifier::showToast(const QString &title, const QString &body, double seconds, const NoticeAction &action)
{
    if (action.kind == NoticeAction::Kind::none) {
        m_toast.show(title, body, seconds, {});
        return;
    }
    QPointer<Notifier> self(this);
    m_toast.show(title, body, toastSeconds(action, seconds), [self, action] {
        if (self)
            self->perform(action);
    });
}

void Notifier::error(const AppError &error)
{
    const ErrorNotice notice = errorNotice(error);
    qCCritical(lcNotifier, "%s: %s", qUtf8Printable(notice.title), qUtf8Printable(notice.body));
    if (recordError)
        recordError(notice.title + QStringLiteral(": ") + notice.body);
    post(notice.title, notice.body, 5.0, notice.action);
}

void Notifier::error(const std::exception &error)
{
    if (const auto *appError = dynamic_cast<const AppError *>(&error)) {
        this->error(*appError);
        return;
    }
    const ErrorNotice notice = errorNotice(error);
    qCCritical(lcNotifier, "%s: %s", qUtf8Printable(notice.title), qUtf8Printable(notice.body));
    if (recordError)
        recordError(notice.title + QStringLiteral(": ") + notice.body);
    post(notice.title, notice.body, 5.0, notice.action);
}

Notifier::ErrorNotice Notifier::errorNotice(const AppError &error)
{
    using Case = AppError::Case;
    const QString body = error.errorDescription();
    switch (error.kind()) {
    case Case::fileIOFailed:
        return {QStringLiteral("The capture couldn't be saved"), body, NoticeAction::none()};
    case Case::uploadFailed:
    case Case::uploadNotConfigured:
    case Case::keychainDenied:
        return {uploadDidNotWork, body, NoticeAction::showSettings(SettingsTab::cloud)};
    case Case::saveFolderUnavailable:
        return {QStringLiteral("glimpso can't save there"), body, NoticeAction::showSettings(SettingsTab::general)};
    case Case::consentRevoked:
        // The desktop asks itself, or keeps the answer in settings of its own
        // that no link reaches: the click has nowhere to go.
        return {QStringLiteral("glimpso needs Screen Recording permission"), body, NoticeAction::none()};
    case Case::captureFailed:
    case Case::displayNotFound:
    case Case::croppingFailed:
    case Case::noDisplayAtRegion:
        break;
    }
    return {couldNotDoThat, body, NoticeAction::none()};
}

Notifier::ErrorNotice Notifier::errorNotice(const std::exception &error)
{
    if (const auto *appError = dynamic_cast<const AppError *>(&error))
        return errorNotice(*appError);
    return {couldNotDoThat, QString::fromLocal8Bit(error.what()), NoticeAction::none()};
}

QVariantMap Notifier::userInfo(const NoticeAction &action)
{
    switch (action.kind) {
    case NoticeAction::Kind::reveal:
        return {{QStringLiteral("reveal"), action.target}};
    case NoticeAction::Kind::open:
        return {{QStringLiteral("open"), QUrl(action.target).toString(QUrl::FullyEncoded)}};
    case NoticeAction::Kind::showSettings:
        return {{QStringLiteral("settings"), action.target}};
    case NoticeAction::Kind::none:
        return {};
    case NoticeAction::Kind::showUpdates:
        return {{QStringLiteral("updates"), true}};
    case NoticeAction::Kind::reportProblem:
        return {{QStringLiteral("report"), true}};
    }
    return {};
}

QString Notifier::category(const NoticeAction &action)
{
    return action.kind == NoticeAction::Kind::reveal ? captureFileCategory : QString();
}

NotificationBackend::Notification Notifier::notification(const QString &title, const QString &body,
                                                         const NoticeAction &action, bool sound)
{
    NotificationBackend::Notification notification{title, body, {}, sound};
    if (category(action) == captureFileCategory) {
        notification.buttons = {{defaultButton, QString()},
                                {openFileButton, QStringLiteral("Open")},
                                {revealFileButton, QStringLiteral("Show in Folder")}};
    } else if (action.kind != NoticeAction::Kind::none) {
        notification.buttons = {{defaultButton, QString()}};
    }
    return notification;
}

double Notifier::toastSeconds(const NoticeAction &action, double seconds)
{
    return action.kind == NoticeAction::Kind::none ? seconds : std::max(seconds, 4.0);
}

QVariantMap Notifier::clickedNotificationInfo(const QVariantMap &userInfo)
{
    QVariantMap passedOn;
    for (const char *key : {"reveal", "open", "updates", "settings"}) {
        const QString name = QString::fromLatin1(key);
        if (userInfo.contains(name))
            passedOn.insert(name, userInfo.value(name));
    }
    return passedOn;
}

void Notifier::clicked(unsigned id, const QString &key)
{
    const auto it = m_onScreen.find(id);
    if (it == m_onScreen.end())
        return; // another program's notification, or one from before a restart
    qCInfo(lcNotifier, "notification %u clicked: %s", id, qUtf8Printable(key));
    perform(clickedNotificationInfo(it->second), key);
}

void Notifier::perform(const NoticeAction &action)
{
    perform(userInfo(action), QString());
}

void Notifier::perform(const QVariantMap &userInfo, const QString &button)
{
    if (const QString path = userInfo.value(QStringLiteral("reveal")).toString(); !path.isEmpty()) {
        if (button == openFileButton)
            openFile(path);
        else
            m_desktop.reveal(path);
        return;
    }
    if (userInfo.contains(QStringLiteral("open"))) {
        const QUrl url(userInfo.value(QStringLiteral("open")).toString(), QUrl::StrictMode);
        if (url.isValid() && !url.scheme().isEmpty())
            m_desktop.open(url);
        return;
    }
    if (userInfo.contains(QStringLiteral("updates"))) {
        if (routes.showUpdates)
            routes.showUpdates();
        return;
    }
    if (userInfo.contains(QStringLiteral("settings"))) {
        const std::optional<SettingsTab> tab = enumFromText<SettingsTab>(userInfo.value(QStringLiteral("settings")).toString());
        if (tab && routes.showSettings)
            routes.showSettings(*tab);
        return;
    }
    if (userInfo.contains(QStringLiteral("report")) && routes.reportProblem)
        routes.reportProblem();
}

void Notifier::openFile(const QString &path)
{
    // A file moved or deleted since the notice opens nothing.
    if (!QFileInfo::exists(path)) {
        qCInfo(lcNotifier, "open: %s is gone", qUtf8Printable(path));
        return;
    }
    const AppSettings::SaveDirectoryAccess access = m_settings.accessSaveDirectory();
    m_desktop.open(QUrl::fromLocalFile(path));
    if (access.stop)
        access.stop();
}

void Notifier::showProgress(const QString &title, const QString &body, double seconds)
{
    m_showingProgress = true;
    m_toast.show(title, body, seconds, {});
}

void Notifier::changeProgress(const QString &title, const QString &body, double seconds)
{
    if (!m_showingProgress) {
        showProgress(title, body, seconds);
        return;
    }
    m_toast.changeText(title, body);
}

void Notifier::clearProgress()
{
    if (!m_showingProgress)
        return;
    m_showingProgress = false;
    m_toast.dismiss();
}
