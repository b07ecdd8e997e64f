#pragma once

#include <QObject>

#include <functional>
#include <map>
#include <memory>

class QTimer;

// The session's timers and its "later on the main thread": the countdown's
// seconds, the clock's ticks, and the steps that run once the current turn
// of the event loop is over. Tests hand in one that they advance themselves.
class RecordingScheduler
{
public:
    using TimerID = int;

    virtual ~RecordingScheduler() = default;
    // Runs `run` once, `milliseconds` from now.
    virtual void after(int milliseconds, std::function<void()> run) = 0;
    // Runs `run` once, as soon as the current turn is over.
    virtual void post(std::function<void()> run) = 0;
    // Runs `run` every `milliseconds` until cancelled.
    virtual TimerID every(int milliseconds, std::function<void()> run) = 0;
    virtual void cancel(TimerID id) = 0;
};

// Qt's timers on the main thread, precise to the millisecond.
class QtRecordingScheduler : public QObject, public RecordingScheduler
{
public:
    explicit QtRecordingScheduler(QObject *parent = nullptr);
    ~QtRecordingScheduler() override;

    void after(int milliseconds, std::function<void()> run) override;
    void post(std::function<void()> run) override;
    TimerID every(int milliseconds, std::function<void()> run) override;
    void cancel(TimerID id) override;

private:
    std::map<TimerID, std::unique_ptr<QTimer>> m_timers;
    TimerID m_next = 1;
};
