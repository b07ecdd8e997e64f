#include "app/TrayActions.h"

#include "app/CaptureCoordinator.h"
#include "app/RecordingCoordinator.h"
#include "appbase/AppError.h"
#include "output/DesktopOpener.h"
#include "output/Notifying.h"
#include "settings/AppSettings.h"

#include <QDir>
#include <QLoggingCategory>
#include <QUrl>

#include <algorithm>

Q_LOGGING_CATEGORY(lcTrayActions, "glimpso.TrayActions", QtInfoMsg)

namespace {

using Reply = TrayActions::Reply;

Reply usage(const QString &text)
{
    return {2, {}, QStringLiteral("glimpso: usage: glimpso ") + text};
}

} // namespace

TrayActions::TrayActions(CaptureCoordinator &coordinator, AppSettings &settings, Notifying &notifier,
                         DesktopOpener &desktop)
    : m_coordinator(coordinator)
    , m_settings(settings)
    , m_notifier(notifier)
    , m_desktop(desktop)
{
}

Reply TrayActions::notAvailableYet(const QString &what)
{
    qCInfo(lcTrayActions, "%s is not available yet", qUtf8Printable(what));
    m_notifier.post(QStringLiteral("Not available yet"),
                    QStringLiteral("%1 is not in this version of glimpso yet.").arg(what), 4.0, NoticeAction::none());
    return {1, {}, QStringLiteral("glimpso: %1 is not available yet").arg(what.toLower())};
}

Reply TrayActions::captureWindow()
{
    if (!m_coordinator.canPickWindows())
        return notAvailableYet(QStringLiteral("Window capture"));
    m_coordinator.captureWindow();
    return {};
}

Reply TrayActions::captureAfterDelay(qint64 seconds)
{
    m_settings.captureDelaySeconds.set(seconds);
    m_coordinator.captureRegionDelayed();
    return {};
}

Reply TrayActions::record(CaptureKind kind, RecordingArea area)
{
    if (!m_recorder)
        return notAvailableYet(kind == CaptureKind::gif ? QStringLiteral("GIF recording") : QStringLiteral("Video recording"));
    m_recorder->record(kind, RecordingCoordinator::Area(int(area)));
    return {};
}

Reply TrayActions::stopRecording()
{
    if (!m_recorder || !m_recorder->stopRecording())
        return {1, {}, QStringLiteral("glimpso: no recording is running")};
    return {};
}

Reply TrayActions::showHistory()
{
    return notAvailableYet(QStringLiteral("The history panel"));
}

Reply TrayActions::openSettings(std::optional<SettingsTab>)
{
    qCInfo(lcTrayActions, "menu: settings opened");
    return notAvailableYet(QStringLiteral("The settings window"));
}

Reply TrayActions::checkForUpdates()
{
    return notAvailableYet(QStringLiteral("Checking for updates"));
}

Reply TrayActions::reportProblem()
{
    return notAvailableYet(QStringLiteral("Reporting a problem"));
}

Reply TrayActions::openFolder()
{
    const AppSettings::SaveDirectoryAccess access = m_settings.accessSaveDirectory();
    if (!QDir().mkpath(access.path)) {
        if (access.stop)
            access.stop();
        const AppError error = AppError::saveFolderUnavailable(access.path);
        qCCritical(lcTrayActions, "open folder: %s", qUtf8Printable(error.errorDescription()));
        m_notifier.error(error);
        return {1, {}, QStringLiteral("glimpso: ") + error.errorDescription()};
    }
    m_desktop.open(QUrl::fromLocalFile(access.path));
    if (access.stop)
        access.stop();
    return {0, access.path + u'\n', {}};
}

Reply TrayActions::setEditMode(EditMode mode)
{
    m_settings.editMode.set(mode);
    return {};
}

std::optional<qint64> TrayActions::parseDelay(const QString &text)
{
    bool ok = false;
    const qint64 seconds = text.toLongLong(&ok);
    if (!ok || seconds < 1 || seconds > 3600)
        return std::nullopt;
    return seconds;
}

TrayActions::RecordingArea TrayActions::recordingArea(int tag)
{
    return RecordingArea(std::clamp(tag, 0, 2));
}

std::optional<TrayActions::RecordingArea> TrayActions::recordingArea(const QString &word)
{
    if (word == u"area")
        return RecordingArea::area;
    if (word == u"window")
        return RecordingArea::window;
    if (word == u"screen")
        return RecordingArea::screen;
    return std::nullopt;
}

void TrayActions::registerCommands(CommandRouter &router)
{
    router.add(QStringLiteral("window"), [this](const QStringList &) { return captureWindow(); });
    router.add(QStringLiteral("delay"), [this](const QStringList &arguments) {
        const std::optional<qint64> seconds = arguments.size() == 1 ? parseDelay(arguments[0]) : std::nullopt;
        if (!seconds)
            return usage(QStringLiteral("delay N (whole seconds, 1 to 3600)"));
        return captureAfterDelay(*seconds);
    });
    // `history --list` never gets here: the command line lists it itself.
    router.add(QStringLiteral("history"), [this](const QStringList &arguments) {
        return arguments.isEmpty() ? showHistory() : usage(QStringLiteral("history [--list [--json]]"));
    });
    router.add(QStringLiteral("settings"), [this](const QStringList &arguments) {
        if (arguments.isEmpty())
            return openSettings();
        const std::optional<SettingsTab> tab = enumFromText<SettingsTab>(arguments[0]);
        if (!tab)
            return usage(QStringLiteral("settings [general|screenshots|recording|history|appearance|shortcuts|cloud|"
                                        "updates|about]"));
        return openSettings(tab);
    });
    router.add(QStringLiteral("open-folder"), [this](const QStringList &) { return openFolder(); });
    router.add(QStringLiteral("updates"), [this](const QStringList &) { return checkForUpdates(); });
    router.add(QStringLiteral("report"), [this](const QStringList &) { return reportProblem(); });
    router.add(QStringLiteral("edit-mode"), [this](const QStringList &arguments) {
        if (arguments.isEmpty())
            return Reply{0, enumText(m_settings.editMode()) + u'\n', {}};
        const std::optional<EditMode> mode = enumFromText<EditMode>(arguments[0]);
        if (!mode)
            return usage(QStringLiteral("edit-mode [onScreen|afterCapture]"));
        return setEditMode(*mode);
    });
}
