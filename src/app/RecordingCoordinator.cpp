#include "app/RecordingCoordinator.h"

#include "appbase/AppError.h"
#include "appbase/InProcessNotices.h"
#include "output/Notifying.h"
#include "recording/RecordingSink.h"
#include "settings/AppSettings.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <cmath>

Q_LOGGING_CATEGORY(lcRecordingFlow, "glimpso.RecordingCoordinator")

namespace {

AppError asAppError(const std::exception &error)
{
    if (const auto *appError = dynamic_cast<const AppError *>(&error))
        return *appError;
    return AppError::fileIOFailed(QString::fromUtf8(error.what()));
}

} // namespace

RecordingCoordinator::RecordingCoordinator(Parts parts, QObject *parent) : QObject(parent), m_parts(std::move(parts)) {}

RecordingCoordinator::~RecordingCoordinator() = default;

void RecordingCoordinator::note(const QString &sentence)
{
    if (m_parts.note)
        m_parts.note(sentence);
}

void RecordingCoordinator::setCapturing(bool capturing)
{
    if (m_parts.setCapturing)
        m_parts.setCapturing(capturing);
}

QString RecordingCoordinator::kindLabel(CaptureKind kind)
{
    return kind == CaptureKind::gif ? QStringLiteral("GIF") : QStringLiteral("video");
}

void RecordingCoordinator::notAvailable(CaptureKind kind)
{
    const QString what = kind == CaptureKind::gif ? QStringLiteral("GIF recording") : QStringLiteral("Video recording");
    qCInfo(lcRecordingFlow, "%s is not available yet", qUtf8Printable(what));
    m_parts.notifier.post(QStringLiteral("Not available yet"),
                          QStringLiteral("%1 is not in this version of glimpso yet.").arg(what), 4.0,
                          NoticeAction::none());
}

void RecordingCoordinator::record(CaptureKind kind, Area area)
{
    if (!m_recording && !canRecord(kind)) {
        notAvailable(kind);
        return;
    }
    const QString hint = kind == CaptureKind::gif ? gifHint : videoHint;
    QPointer<RecordingCoordinator> self(this);
    pickRecordingArea(area, hint, [self, kind](QRectF rect, RecordingScreen screen) {
        if (!self)
            return;
        if (kind == CaptureKind::gif)
            self->startGIF(rect, screen, std::nullopt, {});
        else
            self->startVideo(rect, screen, std::nullopt, {});
    });
}

bool RecordingCoordinator::stopRecording()
{
    return m_recording && m_recording->requestEnd();
}

bool RecordingCoordinator::cancelRecording()
{
    if (!m_recording || m_recording->isEnding())
        return false;
    m_recording->cancel();
    return true;
}

void RecordingCoordinator::pickRecordingArea(Area area, const QString &hint,
                                             std::function<void(QRectF, RecordingScreen)> then)
{
    // The record entries toggle: pressed during a recording, they end it.
    if (m_recording) {
        if (m_recording->requestEnd())
            qCInfo(lcRecordingFlow, "record entry during a recording: ending it");
        return;
    }
    if (m_parts.isCapturing && m_parts.isCapturing())
        return;
    if (m_parts.hasCaptureAccess && !m_parts.hasCaptureAccess()) {
        if (m_parts.requestCaptureAccess)
            m_parts.requestCaptureAccess();
        QPointer<RecordingCoordinator> self(this);
        QTimer::singleShot(0, this, [self] {
            if (self)
                self->m_parts.notifier.error(AppError::consentRevoked());
        });
        return;
    }
    QPointer<RecordingCoordinator> self(this);
    switch (area) {
    case Area::area:
        rememberFrontmost();
        setCapturing(true);
        m_parts.picker.pick(hint, [self, then](std::optional<QRectF> rect, std::optional<RecordingScreen> screen) {
            if (!self)
                return;
            self->setCapturing(false);
            self->restorePreviousFrontmost();
            if (rect && screen)
                then(*rect, *screen);
        });
        return;
    case Area::window: {
        if (!m_parts.pickWindow) {
            // No window picker in this build: nothing can be picked, and the flow ends here.
            qCInfo(lcRecordingFlow, "record window: no window picker in this build");
            m_parts.notifier.post(QStringLiteral("Not available yet"),
                                  QStringLiteral("Picking a window to record is not in this version of glimpso yet."),
                                  4.0, NoticeAction::none());
            return;
        }
        rememberFrontmost();
        setCapturing(true);
        m_parts.pickWindow([self, then](std::optional<QRectF> frame) {
            if (!self)
                return;
            self->setCapturing(false);
            self->restorePreviousFrontmost();
            if (!frame)
                return;
            const QList<RecordingScreen> screens = self->m_parts.screens ? self->m_parts.screens() : QList<RecordingScreen>();
            const std::optional<RecordingScreen> screen = RecordingScreen::under(screens, frame->center(), 0);
            if (!screen)
                return;
            const QRectF rect = RecordingSession::roundedOut(frame->intersected(screen->frame));
            // A window smaller than 16 points a side is dropped without a word.
            if (rect.width() < 16 || rect.height() < 16)
                return;
            then(rect, *screen);
        });
        return;
    }
    case Area::screen: {
        const QList<RecordingScreen> screens = m_parts.screens ? m_parts.screens() : QList<RecordingScreen>();
        const QPointF pointer = m_parts.pointer ? m_parts.pointer() : QPointF();
        const std::optional<RecordingScreen> screen = RecordingScreen::under(screens, pointer, 0);
        if (!screen)
            return;
        then(screen->frame, *screen);
        return;
    }
    }
}

RecordingConfig RecordingCoordinator::gifConfig(const QRectF &, const RecordingScreen &screen,
                                                std::optional<bool> countdown, const Overrides &overrides) const
{
    const AppSettings &settings = m_parts.settings;
    RecordingConfig config;
    config.scale = settings.gifRetina() ? screen.scale : 1.0;
    config.framesPerSecond = overrides.framesPerSecond.value_or(int(settings.gifFrameRate()));
    config.showsCursor = settings.gifShowsCursor();
    config.maxSeconds = overrides.maxSeconds.value_or(int(settings.gifMaxSeconds()));
    config.countdown = countdown.value_or(settings.gifCountdown());
    config.systemAudio = false;
    config.microphone = false;
    config.showClicks = settings.gifShowsClicks();
    return config;
}

RecordingConfig RecordingCoordinator::videoConfig(const QRectF &rect, const RecordingScreen &screen,
                                                  std::optional<bool> countdown, const Overrides &overrides) const
{
    const AppSettings &settings = m_parts.settings;
    RecordingConfig config;
    double scale = settings.videoRetina() ? screen.scale : 1.0;
    // H.264's largest picture: the scale is limited so the frames fit it.
    if (settings.videoCompatible() && rect.width() > 0 && rect.height() > 0)
        scale = std::min({scale, 4096.0 / rect.width(), 2304.0 / rect.height()});
    config.scale = scale;
    config.framesPerSecond = overrides.framesPerSecond.value_or(int(settings.videoFrameRate()));
    config.showsCursor = settings.videoShowsCursor();
    config.maxSeconds = overrides.maxSeconds.value_or(int(settings.videoMaxMinutes() * 60));
    config.countdown = countdown.value_or(settings.videoCountdown());
    config.systemAudio = settings.videoSystemAudio();
    config.microphone = settings.videoMicrophone();
    config.showClicks = settings.videoShowsClicks();
    return config;
}

bool RecordingCoordinator::startGIF(const QRectF &rect, const RecordingScreen &screen, std::optional<bool> countdown,
                                    std::function<void(std::optional<QString>)> done, const Overrides &overrides)
{
    return start(CaptureKind::gif, rect, screen, gifConfig(rect, screen, countdown, overrides), std::move(done),
                 overrides.action);
}

bool RecordingCoordinator::startVideo(const QRectF &rect, const RecordingScreen &screen,
                                      std::optional<bool> countdown, std::function<void(std::optional<QString>)> done,
                                      const Overrides &overrides)
{
    return start(CaptureKind::video, rect, screen, videoConfig(rect, screen, countdown, overrides), std::move(done),
                 overrides.action);
}

bool RecordingCoordinator::start(CaptureKind kind, const QRectF &rect, const RecordingScreen &screen,
                                 const RecordingConfig &config, std::function<void(std::optional<QString>)> done,
                                 std::optional<RecordingAction> action)
{
    if (m_recording)
        return false;
    const auto factory = m_parts.sinks.find(kind);
    if (factory == m_parts.sinks.end() || !factory->second || !m_parts.makeSession) {
        notAvailable(kind);
        Q_EMIT recordingFlowEnded({}, QStringLiteral("%1 recording is not available yet").arg(kindLabel(kind)));
        return false;
    }
    const QRectF whole = RecordingSession::roundedOut(rect);
    const QSize pixels = RecordingSession::pixelSize(whole, config.scale);
    std::shared_ptr<RecordingSink> sink;
    try {
        sink = factory->second(pixels, config);
    } catch (const std::exception &error) {
        const AppError reason = asAppError(error);
        qCCritical(lcRecordingFlow, "%s recording couldn't start: %s", qUtf8Printable(kindLabel(kind)),
                   qUtf8Printable(reason.errorDescription()));
        QPointer<RecordingCoordinator> self(this);
        QTimer::singleShot(0, this, [self, reason] {
            if (self)
                self->m_parts.notifier.error(reason);
        });
        Q_EMIT recordingFlowEnded({}, reason.errorDescription());
        return false;
    }
    QPointer<RecordingCoordinator> self(this);
    m_recording = m_parts.makeSession(whole, screen, config, sink,
                                      [self, kind, action, done](const RecordingEnd &end) {
                                          if (self)
                                              self->sessionEnded(end, kind, action, done);
                                      });
    Q_EMIT InProcessNotices::instance().recordingChanged();
    note(kind == CaptureKind::gif ? QStringLiteral("Started a GIF recording")
                                  : QStringLiteral("Started a video recording"));
    qCInfo(lcRecordingFlow, "%s recording of %gx%g at (%g, %g), %dx%d pixels at %d fps, countdown %d",
           qUtf8Printable(kindLabel(kind)), whole.width(), whole.height(), whole.x(), whole.y(), pixels.width(),
           pixels.height(), config.framesPerSecond, config.countdown);
    m_recording->start();
    return true;
}

void RecordingCoordinator::sessionEnded(const RecordingEnd &end, CaptureKind kind,
                                        std::optional<RecordingAction> action,
                                        std::function<void(std::optional<QString>)> done)
{
    // The session may be the caller right now: it goes once this turn is over.
    if (m_recording)
        m_recording.release()->deleteLater();
    Q_EMIT InProcessNotices::instance().recordingChanged();
    // Read now, at the end: a change during the recording counts.
    const RecordingAction chosen = action.value_or(kind == CaptureKind::gif ? m_parts.settings.gifAfterRecording()
                                                                            : m_parts.settings.videoAfterRecording());
    finishRecording(end, kind, chosen, std::move(done));
}

QString RecordingCoordinator::durationText(double seconds)
{
    if (seconds < 60)
        return QString::asprintf("%.1f s", seconds);
    const qint64 whole = qint64(seconds);
    return QString::asprintf("%lld:%02lld", whole / 60, whole % 60);
}

QString RecordingCoordinator::sizeText(qint64 bytes)
{
    // As file sizes are told on the desktop: powers of 1000; bytes whole,
    // kilobytes whole, megabytes to one place, larger to two.
    if (bytes == 0)
        return QStringLiteral("Zero KB");
    if (bytes == 1)
        return QStringLiteral("1 byte");
    if (bytes < 1000)
        return QStringLiteral("%1 bytes").arg(bytes);
    const double kb = double(bytes) / 1000;
    if (kb < 999.5)
        return QStringLiteral("%1 KB").arg(qint64(std::llround(kb)));
    const double mb = kb / 1000;
    if (mb < 999.95)
        return QString::asprintf("%.1f MB", mb);
    return QString::asprintf("%.2f GB", mb / 1000);
}

void RecordingCoordinator::failed(const AppError &error, std::function<void(std::optional<QString>)> done)
{
    QPointer<RecordingCoordinator> self(this);
    QTimer::singleShot(0, this, [self, error] {
        if (self)
            self->m_parts.notifier.error(error);
    });
    Q_EMIT recordingFlowEnded({}, error.errorDescription());
    if (done)
        done(std::nullopt);
}

void RecordingCoordinator::finishRecording(const RecordingEnd &end, CaptureKind kind, RecordingAction action,
                                           std::function<void(std::optional<QString>)> done)
{
    note(QStringLiteral("Stopped the recording"));
    const QString label = kindLabel(kind);
    switch (end.kind) {
    case RecordingEnd::Kind::cancelled:
        Q_EMIT recordingFlowEnded({}, {});
        if (done)
            done(std::nullopt);
        return;
    case RecordingEnd::Kind::failed: {
        const AppError error = end.error.value_or(AppError::captureFailed(QStringLiteral("unknown")));
        qCCritical(lcRecordingFlow, "%s recording failed: %s", qUtf8Printable(label),
                   qUtf8Printable(error.errorDescription()));
        failed(error, std::move(done));
        return;
    }
    case RecordingEnd::Kind::finished:
        break;
    }
    if (!m_parts.saveFile) {
        failed(AppError::fileIOFailed(QStringLiteral("no save folder in this build")), std::move(done));
        return;
    }
    QPointer<RecordingCoordinator> self(this);
    const double seconds = end.seconds;
    m_parts.saveFile(end.path, kind)
        .then(this,
              [self, kind, action, seconds, label, done](const QString &saved) {
                  if (!self)
                      return;
                  const Parts &parts = self->m_parts;
                  if (parts.addHistoryFile)
                      parts.addHistoryFile(saved);
                  if (action == RecordingAction::trim && parts.openTrim) {
                      if (done)
                          done(saved);
                      Q_EMIT self->recordingFlowEnded(saved, {});
                      parts.openTrim(saved, kind);
                      return;
                  }
                  // Without a trim window in this build, trim keeps the file
                  // saved and tells so, as a save does.
                  if (action == RecordingAction::copy && parts.copyFile)
                      parts.copyFile(saved, kind);
                  const qint64 bytes = QFileInfo(saved).size();
                  const QString verb = action == RecordingAction::copy ? QStringLiteral("Copied") : QStringLiteral("Saved");
                  const QString title = QStringLiteral("%1 %2 · %3 · %4")
                                            .arg(verb, label, durationText(seconds), sizeText(bytes));
                  const QString body =
                      kind == CaptureKind::gif && bytes > largeGIFBytes
                          ? QStringLiteral("That's a large GIF: a smaller area or a lower frame rate makes it smaller.")
                          : QFileInfo(saved).fileName();
                  parts.notifier.post(title, body, 3.0, NoticeAction::reveal(saved));
                  qCInfo(lcRecordingFlow, "%s saved: %s (%lld bytes, %.2f s)", qUtf8Printable(label),
                         qUtf8Printable(saved), qlonglong(bytes), seconds);
                  Q_EMIT self->recordingFlowEnded(saved, {});
                  if (done)
                      done(saved);
              })
        .onFailed(this, [self, label, done](const std::exception &error) {
            if (!self)
                return;
            // The temporary file stays where it is.
            const AppError reason = asAppError(error);
            qCCritical(lcRecordingFlow, "%s recording could not be saved: %s", qUtf8Printable(label),
                       qUtf8Printable(reason.errorDescription()));
            self->failed(reason, done);
        });
}

void RecordingCoordinator::rememberFrontmost()
{
    if (const std::optional<FocusKeeper::Window> active = m_parts.focus.activeForeignWindow())
        m_previousFrontmost = active;
}

void RecordingCoordinator::restorePreviousFrontmost()
{
    if (!m_previousFrontmost)
        return;
    const FocusKeeper::Window window = *m_previousFrontmost;
    m_previousFrontmost.reset();
    m_parts.focus.activate(window);
}
