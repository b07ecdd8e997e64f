#pragma once

#include "acquire/FocusKeeper.h"
#include "appbase/CaptureKind.h"
#include "recording/LiveAreaPicker.h"
#include "recording/RecordingConfig.h"
#include "recording/RecordingEnd.h"
#include "recording/RecordingScreen.h"
#include "recording/RecordingSession.h"
#include "settings/SettingsEnums.h"

#include <QFuture>
#include <QObject>
#include <QSize>

#include <functional>
#include <map>
#include <memory>
#include <optional>

class AppSettings;
class Notifying;
class RecordingSink;

// The recording flows: choosing what to record (a dragged area, a window, the
// screen under the pointer), reading the settings into a session, and turning
// the session's end into a saved file, a clipboard entry, the trim window or
// a notice. The record entries toggle: the same entry stops the recording
// that runs. Main thread only.
class RecordingCoordinator : public QObject
{
    Q_OBJECT

public:
    // What the user asked to record.
    enum class Area { area, window, screen };

    // A sink for frames of `pixelSize`; throws AppError when it cannot be made.
    using SinkFactory =
        std::function<std::shared_ptr<RecordingSink>(const QSize &pixelSize, const RecordingConfig &config)>;
    using SessionFactory = std::function<std::unique_ptr<RecordingSession>(
        const QRectF &rect, const RecordingScreen &screen, const RecordingConfig &config,
        std::shared_ptr<RecordingSink> sink, RecordingSession::Completion completion)>;
    // A window picked to record: its frame in global points; absent when the pick was left.
    using WindowPickCompletion = std::function<void(std::optional<QRectF> frame)>;

    // What the coordinator reaches; each function may be empty where its
    // subsystem is missing.
    struct Parts {
        AppSettings &settings;
        Notifying &notifier;
        FocusKeeper &focus;
        LiveAreaPicking &picker;
        SessionFactory makeSession;
        // One factory per kind of recording; a kind without one is not in this build.
        std::map<CaptureKind, SinkFactory> sinks;
        std::function<void(WindowPickCompletion)> pickWindow;
        std::function<QList<RecordingScreen>()> screens = &RecordingScreen::current;
        std::function<QPointF()> pointer = &RecordingScreen::pointer;
        // The image coordinator's "a session is being set up", shared so
        // that a screenshot and a recording pick never overlap.
        std::function<bool()> isCapturing;
        std::function<void(bool)> setCapturing;
        std::function<bool()> hasCaptureAccess;
        std::function<void()> requestCaptureAccess;
        // Moves a finished recording into the save folder; its final path.
        std::function<QFuture<QString>(const QString &path, CaptureKind kind)> saveFile;
        std::function<void(const QString &path, CaptureKind kind)> copyFile;
        std::function<void(const QString &path)> addHistoryFile;
        std::function<void(const QString &path, CaptureKind kind)> openTrim;
        // A diary sentence of what the user did.
        std::function<void(const QString &sentence)> note;
    };

    // What a command line may set for one recording, over the settings.
    struct Overrides {
        std::optional<int> framesPerSecond;
        std::optional<int> maxSeconds;
        std::optional<RecordingAction> action;
    };

    explicit RecordingCoordinator(Parts parts, QObject *parent = nullptr);
    ~RecordingCoordinator() override;

    // The record entries of the tray, the hotkeys and the command line.
    void recordGIF(Area area) { record(CaptureKind::gif, area); }
    void recordVideo(Area area) { record(CaptureKind::video, area); }
    void record(CaptureKind kind, Area area);

    // Builds and starts a session; false (with the reason told) when it
    // could not start. `done` gets the saved file, or nothing.
    bool startGIF(const QRectF &rect, const RecordingScreen &screen, std::optional<bool> countdown,
                  std::function<void(std::optional<QString>)> done, const Overrides &overrides = {});
    bool startVideo(const QRectF &rect, const RecordingScreen &screen, std::optional<bool> countdown,
                    std::function<void(std::optional<QString>)> done, const Overrides &overrides = {});

    // The session that runs, if any: its presence is "recording".
    RecordingSession *recording() const { return m_recording.get(); }
    bool isRecording() const { return m_recording != nullptr; }
    bool canRecord(CaptureKind kind) const { return m_parts.sinks.count(kind) > 0; }
    // Stops the running recording as the tray's stop does (cancels it during
    // the countdown); false when none runs or it is ending already.
    bool stopRecording();
    // Discards the running recording; false when none runs or it is ending already.
    bool cancelRecording();

    // The texts of the finished notice, public for their tests.
    static QString durationText(double seconds);
    static QString sizeText(qint64 bytes);
    static QString kindLabel(CaptureKind kind);
    static constexpr qint64 largeGIFBytes = 20'000'000;

    static inline const QString gifHint = QStringLiteral("Drag over what to record as a GIF");
    static inline const QString videoHint = QStringLiteral("Drag over what to record as a video");

Q_SIGNALS:
    // A recording's flow is over: the saved file, or the text of the failure
    // that ended it; both empty after a cancel.
    void recordingFlowEnded(const QString &savedPath, const QString &errorText);

private:
    void pickRecordingArea(Area area, const QString &hint, std::function<void(QRectF, RecordingScreen)> then);
    bool start(CaptureKind kind, const QRectF &rect, const RecordingScreen &screen, const RecordingConfig &config,
               std::function<void(std::optional<QString>)> done, std::optional<RecordingAction> action);
    RecordingConfig gifConfig(const QRectF &rect, const RecordingScreen &screen, std::optional<bool> countdown,
                              const Overrides &overrides) const;
    RecordingConfig videoConfig(const QRectF &rect, const RecordingScreen &screen, std::optional<bool> countdown,
                                const Overrides &overrides) const;
    void sessionEnded(const RecordingEnd &end, CaptureKind kind, std::optional<RecordingAction> action,
                      std::function<void(std::optional<QString>)> done);
    void finishRecording(const RecordingEnd &end, CaptureKind kind, RecordingAction action,
                         std::function<void(std::optional<QString>)> done);
    void failed(const AppError &error, std::function<void(std::optional<QString>)> done);
    void rememberFrontmost();
    void restorePreviousFrontmost();
    void setCapturing(bool capturing);
    void note(const QString &sentence);
    void notAvailable(CaptureKind kind);

    Parts m_parts;
    std::unique_ptr<RecordingSession> m_recording;
    std::optional<FocusKeeper::Window> m_previousFrontmost;
};
