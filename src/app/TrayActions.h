#pragma once

#include "app/CommandRouter.h"
#include "appbase/CaptureKind.h"
#include "settings/SettingsEnums.h"
#include "settings/SettingsTab.h"

#include <QString>

#include <optional>

class AppSettings;
class CaptureCoordinator;
class RecordingCoordinator;
class DesktopOpener;
class Notifying;

// What the tray menu's items do, in one place, so that each is also a verb of
// the command line (a desktop's own shortcut settings can bind any of them).
// Each answers as a command does; the menu drops the answer. An item whose
// window is not in this build says so, as a notice and as the answer.
class TrayActions
{
public:
    using Reply = CommandRouter::Reply;
    // What a recording covers: a dragged area, a window or a whole screen.
    enum class RecordingArea { area, window, screen };

    TrayActions(CaptureCoordinator &coordinator, AppSettings &settings, Notifying &notifier, DesktopOpener &desktop);
    // Where the record entries go; without one they say they are not available.
    void setRecorder(RecordingCoordinator *recorder) { m_recorder = recorder; }

    Reply captureWindow();
    // Stores the delay and starts the countdown of a region capture.
    Reply captureAfterDelay(qint64 seconds);
    Reply record(CaptureKind kind, RecordingArea area);
    Reply stopRecording();
    Reply showHistory();
    Reply openSettings(std::optional<SettingsTab> tab = std::nullopt);
    Reply checkForUpdates();
    Reply reportProblem();
    // Opens the save folder, made first if it is missing, in the file manager.
    Reply openFolder();
    Reply setEditMode(EditMode mode);

    // The verbs: window, delay N, history, settings, open-folder, updates,
    // report, edit-mode (the recording verbs are RecordingCommands').
    void registerCommands(CommandRouter &router);

    // A delay the command line accepts: whole seconds from 1 to 3600.
    static std::optional<qint64> parseDelay(const QString &text);
    // A recording tag as the menu and the command line give it: 0 (or
    // "area"), 1 ("window"), 2 ("screen"); other numbers are clamped.
    static RecordingArea recordingArea(int tag);
    static std::optional<RecordingArea> recordingArea(const QString &word);

    Reply notAvailableYet(const QString &what);

private:
    CaptureCoordinator &m_coordinator;
    AppSettings &m_settings;
    Notifying &m_notifier;
    DesktopOpener &m_desktop;
    RecordingCoordinator *m_recorder = nullptr;
};
