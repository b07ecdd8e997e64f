#include "recording/RecordingSession.h"

#include "output/Notifying.h"
#include "recording/HostClock.h"
#include "recording/RecordingChrome.h"
#include "recording/RecordingSink.h"
#include "recording/StreamOutput.h"

#include <QLoggingCategory>
#include <QPointer>

#include <algorithm>
#include <cmath>

Q_LOGGING_CATEGORY(lcRecording, "glimpso.Recording")

namespace {

AppError asAppError(const std::exception &error)
{
    if (const auto *appError = dynamic_cast<const AppError *>(&error))
        return *appError;
    return AppError::fileIOFailed(QString::fromUtf8(error.what()));
}

} // namespace

RecordingSession::RecordingSession(const QRectF &rect, const RecordingScreen &screen, const Config &config,
                                   std::shared_ptr<RecordingSink> sink, Completion completion, Parts parts,
                                   QObject *parent)
    : QObject(parent),
      m_rect(roundedOut(rect)),
      m_screen(screen),
      m_config(config),
      m_pixelSize(pixelSize(rect, config.scale)),
      m_sink(std::move(sink)),
      m_completion(std::move(completion)),
      m_parts(std::move(parts))
{
}

RecordingSession::~RecordingSession()
{
    // A session dropped while it records (the application quitting) stops
    // its stream, so no frame arrives for a sink that is going away; the file
    // is left as it is.
    if (m_stream)
        m_stream->stop();
    for (const auto &watch : m_watches)
        watch->stop();
    if (m_rings)
        m_rings->stop();
}

QRectF RecordingSession::roundedOut(const QRectF &rect)
{
    const QRectF r = rect.normalized();
    const double left = std::floor(r.left());
    const double top = std::floor(r.top());
    const double right = std::ceil(r.right());
    const double bottom = std::ceil(r.bottom());
    return {left, top, right - left, bottom - top};
}

QSize RecordingSession::pixelSize(const QRectF &rect, double scale)
{
    const QRectF whole = roundedOut(rect);
    const int width = int(std::lround(whole.width() * scale));
    const int height = int(std::lround(whole.height() * scale));
    return {std::max(width, 2), std::max(height, 2)};
}

QRectF RecordingSession::barFrame(const QRectF &area, const QRectF &visible, const QSizeF &size)
{
    // Global points, y up: top() is the lower edge, bottom() the upper one.
    const double w = size.width();
    const double h = size.height();
    double y = area.top() - h - 12;
    if (y < visible.top() + 8)
        y = std::min(area.bottom() + 12, visible.bottom() - h - 8);
    double x = area.center().x() - w * 0.5;
    x = std::min(x, visible.right() - w - 8);
    x = std::max(x, visible.left() + 8);
    return {x, y, w, h};
}

void RecordingSession::start()
{
    m_parts.chrome->showBorder(m_rect);
    if (m_config.countdown) {
        m_counting = true;
        runCountdown(3);
        return;
    }
    QPointer<RecordingSession> self(this);
    m_parts.scheduler.post([self] {
        if (self)
            self->beginStream();
    });
}

void RecordingSession::runCountdown(int n)
{
    if (m_ending)
        return;
    if (n > 0) {
        m_parts.chrome->showCountdown(m_rect, n);
        QPointer<RecordingSession> self(this);
        m_parts.scheduler.after(1000, [self, n] {
            if (self)
                self->runCountdown(n - 1);
        });
        return;
    }
    m_counting = false;
    m_parts.chrome->hideCountdown();
    beginStream();
}

void RecordingSession::beginStream()
{
    if (m_ending)
        return;
    const QRectF bar = barFrame(m_rect, m_screen.visibleFrame, m_parts.chrome->barSize());
    StreamRequest request;
    request.displayID = m_screen.displayID;
    request.area = m_rect;
    request.screenFrame = m_screen.frame;
    request.outputSize = m_pixelSize;
    request.framesPerSecond = m_config.framesPerSecond;
    request.showsCursor = m_config.showsCursor;
    // The bar over the area (a whole screen recorded) must not be recorded.
    if (bar.intersects(m_rect))
        request.keepOut << bar;

    try {
        if (!m_parts.makeStream)
            throw AppError::captureFailed(QStringLiteral("this build of glimpso cannot record the screen"));
        m_stream = m_parts.makeStream(request);
        if (!m_stream)
            throw AppError::displayNotFound();
        m_output = std::make_unique<StreamOutput>(*m_sink);
        QPointer<RecordingSession> self(this);
        m_output->onError = [this, self](const QString &reason) {
            // On the stream's thread; the session outlives its stream.
            QMetaObject::invokeMethod(
                this,
                [self, reason] {
                    if (self)
                        self->streamFailed(reason);
                },
                Qt::QueuedConnection);
        };
        StreamOutput *output = m_output.get();
        // The stream takes its first whole frame before the bar is up.
        m_stream->start([output](const CaptureStream::Sample &sample) { output->sample(sample); },
                        [output](const QString &reason) { output->stopped(reason); });
        // The clock runs from the stream's start, before any window of ours is made.
        m_startTime = m_parts.clock.now();
    } catch (const AppError &error) {
        startFailed(error);
        return;
    } catch (const std::exception &error) {
        startFailed(asAppError(error));
        return;
    }

    QPointer<RecordingSession> self(this);
    m_parts.chrome->showBar(
        bar,
        [self] {
            if (self)
                self->stop();
        },
        [self] {
            if (self)
                self->cancel();
        });
    if (m_config.showClicks && m_parts.makeClickRings) {
        m_rings = m_parts.makeClickRings(m_rect);
        if (m_rings)
            m_rings->start();
    }
    startTicker();
    watchForInterruptions();
    qCInfo(lcRecording, "recording started: %d×%d at %d fps", m_pixelSize.width(), m_pixelSize.height(),
           m_config.framesPerSecond);
}

void RecordingSession::startFailed(const AppError &error)
{
    qCCritical(lcRecording, "recording couldn't start: %s", qUtf8Printable(error.errorDescription()));
    m_ending = true;
    m_startTime.reset();
    if (m_stream)
        m_stream->stop();
    m_sink->cancel();
    tearDown();
    complete(RecordingEnd::failed(error));
}

void RecordingSession::startTicker()
{
    m_parts.chrome->setSeconds(0);
    QPointer<RecordingSession> self(this);
    m_ticker = m_parts.scheduler.every(500, [self] {
        if (self)
            self->tick();
    });
}

void RecordingSession::tick()
{
    if (!m_startTime)
        return;
    const double elapsed = m_parts.clock.now() - *m_startTime;
    m_parts.chrome->setSeconds(elapsed);
    if (elapsed >= m_config.maxSeconds)
        stop();
}

void RecordingSession::watchForInterruptions()
{
    if (!m_parts.makeWatches)
        return;
    m_watches = m_parts.makeWatches();
    QPointer<RecordingSession> self(this);
    for (const auto &watch : m_watches)
        watch->start([self](InterruptionWatch::Reason reason) {
            if (self)
                self->interrupted(reason);
        });
}

void RecordingSession::interrupted(InterruptionWatch::Reason reason)
{
    if (m_ending)
        return;
    qCInfo(lcRecording, "recording ends: %s", qUtf8Printable(InterruptionWatch::describe(reason)));
    if (reason == InterruptionWatch::Reason::thermalCritical)
        m_parts.notifier.post(QStringLiteral("Recording stopped"),
                              QStringLiteral("Your computer is very hot. What was recorded is kept."), 2.0,
                              NoticeAction::none());
    stop();
}

void RecordingSession::stop()
{
    if (m_ending)
        return;
    m_ending = true;
    QPointer<RecordingSession> self(this);
    if (!m_startTime) {
        // Nothing is recorded yet (the countdown runs): nothing to keep.
        m_parts.scheduler.post([self] {
            if (self)
                self->cancelNow();
        });
        return;
    }
    m_parts.scheduler.post([self] {
        if (self)
            self->finish();
    });
}

void RecordingSession::cancel()
{
    if (m_ending)
        return;
    m_ending = true;
    QPointer<RecordingSession> self(this);
    m_parts.scheduler.post([self] {
        if (self)
            self->cancelNow();
    });
}

bool RecordingSession::requestEnd()
{
    if (m_ending)
        return false;
    if (m_startTime)
        stop();
    else
        cancel();
    return true;
}

void RecordingSession::streamFailed(const QString &reason)
{
    qCCritical(lcRecording, "recording stream stopped: %s", qUtf8Printable(reason));
    if (m_ending)
        return;
    m_ending = true;
    // What was recorded until now is kept.
    finish();
}

void RecordingSession::cancelNow()
{
    if (m_stream)
        m_stream->stop();
    m_sink->cancel();
    tearDown();
    complete(RecordingEnd::cancelled());
}

void RecordingSession::finish()
{
    if (m_stream)
        m_stream->stop();
    // Read after the stream has stopped, so that the last frame lasts to the true end.
    const double end = m_parts.clock.now();
    tearDown();
    const double seconds = m_startTime ? end - *m_startTime : 0;
    QPointer<RecordingSession> self(this);
    m_sink->finish(end)
        .then(this,
              [self, seconds](const QString &path) {
                  if (self)
                      self->complete(RecordingEnd::finished(path, seconds));
              })
        .onFailed(this, [self](const std::exception &error) {
            if (self)
                self->complete(RecordingEnd::failed(asAppError(error)));
        });
}

void RecordingSession::tearDown()
{
    if (m_ticker) {
        m_parts.scheduler.cancel(*m_ticker);
        m_ticker.reset();
    }
    if (m_rings)
        m_rings->stop();
    for (const auto &watch : m_watches)
        watch->stop();
    m_watches.clear();
    m_stream.reset();
    m_counting = false;
    m_parts.chrome->hideAll();
}

void RecordingSession::complete(const RecordingEnd &end)
{
    if (m_completed)
        return;
    m_completed = true;
    qCInfo(lcRecording, "recording ended: %s", qUtf8Printable(end.description()));
    // The last thing done here: the completion may let the session go.
    if (m_completion)
        m_completion(end);
}
