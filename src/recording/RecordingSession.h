#pragma once

#include "recording/CaptureStream.h"
#include "recording/InterruptionWatch.h"
#include "recording/RecordingConfig.h"
#include "recording/RecordingEnd.h"
#include "recording/RecordingScheduler.h"
#include "recording/RecordingScreen.h"

#include <QObject>
#include <QRectF>
#include <QSize>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class HostClock;
class Notifying;
class RecordingChrome;
class RecordingSink;
class StreamOutput;

// Something that runs beside the stream and ends with it: the click rings.
class SessionCompanion
{
public:
    virtual ~SessionCompanion() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
};

// One screen recording, from the moment the area is known to the one file
// or failure handed back: the border around the area, the countdown, the
// control bar and its clock, the capture stream, the watch for events that
// must end a recording, and the frames handed to the sink. It knows no GIF
// from video: the caller makes the sink and gets exactly one End.
//
// The session lives on the main thread; only the frames cross threads (the
// stream's own thread, straight into the sink).
class RecordingSession : public QObject
{
    Q_OBJECT

public:
    using Config = RecordingConfig;
    using End = RecordingEnd;
    using Completion = std::function<void(const RecordingEnd &)>;

    // What the session reaches; the desktop's pieces come from the platform.
    struct Parts {
        std::shared_ptr<RecordingChrome> chrome;
        RecordingScheduler &scheduler;
        const HostClock &clock;
        Notifying &notifier;
        CaptureStreamFactory makeStream;
        // The watches of the events that end a recording; may be empty.
        std::function<std::vector<std::unique_ptr<InterruptionWatch>>()> makeWatches;
        // The click rings of `area` (global points), for showClicks; may be empty.
        std::function<std::unique_ptr<SessionCompanion>(const QRectF &area)> makeClickRings;
    };

    // `rect` in global points; it is rounded outward to whole points.
    RecordingSession(const QRectF &rect, const RecordingScreen &screen, const Config &config,
                     std::shared_ptr<RecordingSink> sink, Completion completion, Parts parts, QObject *parent = nullptr);
    ~RecordingSession() override;

    // The size of the frames of `rect` at `scale`: the rectangle rounded out
    // to whole points, times the scale, rounded, at least 2 each way. The
    // sink is made with the same size.
    static QSize pixelSize(const QRectF &rect, double scale);
    // The smallest rectangle of whole points that holds `rect`.
    static QRectF roundedOut(const QRectF &rect);
    // Where the control bar of `size` goes: 12 points under the area; if
    // that leaves the visible frame, 12 over it, but inside the screen;
    // centred on the area and 8 points inside the visible frame's sides.
    static QRectF barFrame(const QRectF &area, const QRectF &visible, const QSizeF &size);

    // Shows the border, then the countdown or the stream.
    void start();
    // Ends and keeps what was recorded; during the countdown, ends as cancel does.
    void stop();
    // Ends and discards.
    void cancel();
    // The record entry pressed again: nothing when the session is ending
    // already (false); otherwise cancel while nothing is recorded yet, else stop.
    bool requestEnd();

    bool isEnding() const { return m_ending; }
    std::optional<double> startTime() const { return m_startTime; }
    QRectF rect() const { return m_rect; }
    RecordingScreen screen() const { return m_screen; }
    QSize outputSize() const { return m_pixelSize; }
    const Config &config() const { return m_config; }
    bool isCounting() const { return m_counting; }

private:
    void runCountdown(int n);
    void beginStream();
    void startFailed(const AppError &error);
    void startTicker();
    void tick();
    void watchForInterruptions();
    void interrupted(InterruptionWatch::Reason reason);
    void streamFailed(const QString &reason);
    void cancelNow();
    void finish();
    void tearDown();
    void complete(const RecordingEnd &end);

    QRectF m_rect;
    RecordingScreen m_screen;
    Config m_config;
    QSize m_pixelSize;
    std::shared_ptr<RecordingSink> m_sink;
    Completion m_completion;
    Parts m_parts;
    std::unique_ptr<CaptureStream> m_stream;
    std::unique_ptr<StreamOutput> m_output;
    std::vector<std::unique_ptr<InterruptionWatch>> m_watches;
    std::unique_ptr<SessionCompanion> m_rings;
    std::optional<double> m_startTime;
    std::optional<RecordingScheduler::TimerID> m_ticker;
    bool m_ending = false;
    bool m_counting = false;
    bool m_completed = false;
};
