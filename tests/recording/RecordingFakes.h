#pragma once

#include "appbase/AppError.h"
#include "recording/CaptureStream.h"
#include "recording/HostClock.h"
#include "recording/InterruptionWatch.h"
#include "recording/RecordingChrome.h"
#include "recording/RecordingScheduler.h"
#include "recording/RecordingSink.h"

#include <QFuture>
#include <QList>
#include <QPromise>
#include <QRectF>
#include <QStringList>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <vector>

// A clock the test sets.
struct FakeClock : HostClock {
    double value = 100.0;
    double now() const override { return value; }
};

// Timers that run when the test advances the fake clock, and posted steps
// that run when the test says so.
struct FakeScheduler : RecordingScheduler {
    explicit FakeScheduler(FakeClock &clock) : clock(clock) {}

    struct Timer {
        double due = 0;
        int intervalMs = 0; // 0: once
        std::function<void()> run;
    };

    FakeClock &clock;
    std::map<TimerID, Timer> timers;
    std::vector<std::function<void()>> posted;
    TimerID next = 1;

    void after(int ms, std::function<void()> run) override { timers[next++] = {clock.value + ms / 1000.0, 0, std::move(run)}; }
    void post(std::function<void()> run) override { posted.push_back(std::move(run)); }
    TimerID every(int ms, std::function<void()> run) override
    {
        timers[next] = {clock.value + ms / 1000.0, ms, std::move(run)};
        return next++;
    }
    void cancel(TimerID id) override { timers.erase(id); }

    // Runs posted steps until none is left.
    void runPosted()
    {
        while (!posted.empty()) {
            auto step = std::move(posted.front());
            posted.erase(posted.begin());
            step();
        }
    }

    // Moves the clock forward, running every timer that falls due on the
    // way at its due time, and the posted steps after each.
    void advance(double seconds)
    {
        const double end = clock.value + seconds;
        runPosted();
        while (true) {
            auto it = std::min_element(timers.begin(), timers.end(),
                                       [](const auto &a, const auto &b) { return a.second.due < b.second.due; });
            if (it == timers.end() || it->second.due > end + 1e-9)
                break;
            clock.value = std::max(clock.value, it->second.due);
            const TimerID id = it->first;
            Timer timer = it->second;
            if (timer.intervalMs > 0)
                it->second.due += timer.intervalMs / 1000.0;
            else
                timers.erase(it);
            timer.run();
            runPosted();
            (void)id;
        }
        clock.value = end;
    }
};

// The chrome as a list of what was shown.
struct FakeChrome : RecordingChrome {
    QStringList log;
    std::optional<QRectF> border;
    std::optional<QRectF> bar;
    std::function<void()> onStop;
    std::function<void()> onCancel;
    double seconds = -1;
    bool visible = false;

    void showBorder(const QRectF &area) override
    {
        border = area;
        visible = true;
        log << QStringLiteral("border");
    }
    void showCountdown(const QRectF &, int n) override { log << QStringLiteral("count %1").arg(n); }
    void hideCountdown() override { log << QStringLiteral("count hidden"); }
    QSizeF barSize() const override { return {196, 44}; }
    void showBar(const QRectF &frame, std::function<void()> stop, std::function<void()> cancel) override
    {
        bar = frame;
        onStop = std::move(stop);
        onCancel = std::move(cancel);
        log << QStringLiteral("bar");
    }
    void setSeconds(double value) override { seconds = value; }
    void hideAll() override
    {
        visible = false;
        log << QStringLiteral("hidden");
    }
};

// A stream the test feeds by hand.
struct FakeStream : CaptureStream {
    StreamRequest request;
    OnSample onSample;
    OnStopped onStopped;
    bool started = false;
    bool stopped = false;
    std::optional<AppError> failStart;

    void start(OnSample sample, OnStopped stoppedByItself) override
    {
        if (failStart)
            throw *failStart;
        onSample = std::move(sample);
        onStopped = std::move(stoppedByItself);
        started = true;
    }
    void stop() override { stopped = true; }
};

// A sink that counts and can be told to fail.
struct FakeSink : RecordingSink {
    int appended = 0;
    QList<RecordedFrame> frames;
    bool cancelled = false;
    std::optional<double> finishedAt;
    std::optional<AppError> failFinish;
    QString path = QStringLiteral("/tmp/glimpso-recording-test.gif");

    void append(const RecordedFrame &frame) override
    {
        ++appended;
        frames << frame;
    }
    QFuture<QString> finish(double endTime) override
    {
        finishedAt = endTime;
        if (failFinish)
            return QtFuture::makeExceptionalFuture<QString>(*failFinish);
        return QtFuture::makeReadyFuture(path);
    }
    void cancel() override { cancelled = true; }
    void appendAudio(const RecordedAudio &, bool) override {}
};

// A watch the test fires.
struct FakeWatch : InterruptionWatch {
    std::function<void(Reason)> onEvent;
    bool *stopped = nullptr;
    void start(std::function<void(Reason)> event) override { onEvent = std::move(event); }
    void stop() override
    {
        if (stopped)
            *stopped = true;
        onEvent = {};
    }
};
