#include "recording/RecordingScheduler.h"

#include <QTimer>

QtRecordingScheduler::QtRecordingScheduler(QObject *parent) : QObject(parent) {}

QtRecordingScheduler::~QtRecordingScheduler() = default;

void QtRecordingScheduler::after(int milliseconds, std::function<void()> run)
{
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, this, std::move(run));
}

void QtRecordingScheduler::post(std::function<void()> run)
{
    QMetaObject::invokeMethod(this, std::move(run), Qt::QueuedConnection);
}

RecordingScheduler::TimerID QtRecordingScheduler::every(int milliseconds, std::function<void()> run)
{
    auto timer = std::make_unique<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(milliseconds);
    QObject::connect(timer.get(), &QTimer::timeout, this, std::move(run));
    timer->start();
    const TimerID id = m_next++;
    m_timers[id] = std::move(timer);
    return id;
}

void QtRecordingScheduler::cancel(TimerID id)
{
    const auto it = m_timers.find(id);
    if (it == m_timers.end())
        return;
    // The timer may be the caller right now.
    it->second->stop();
    it->second.release()->deleteLater();
    m_timers.erase(it);
}
