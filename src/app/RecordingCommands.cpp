#include "app/RecordingCommands.h"

#include "acquire/DesktopSpace.h"
#include "app/RecordingCoordinator.h"
#include "app/RecordingVerb.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QScreen>

RecordingCommands::RecordingCommands(RecordingCoordinator &coordinator) : m_coordinator(coordinator) {}

void RecordingCommands::registerCommands(CommandRouter &router)
{
    router.add(QStringLiteral("gif"), [this](const QStringList &arguments) { return record(CaptureKind::gif, arguments); });
    router.add(QStringLiteral("video"),
               [this](const QStringList &arguments) { return record(CaptureKind::video, arguments); });
    router.add(QStringLiteral("stop"), [this](const QStringList &) { return stop(); });
    router.add(QStringLiteral("cancel"), [this](const QStringList &) { return cancel(); });
}

RecordingCommands::Reply RecordingCommands::record(CaptureKind kind, const QStringList &arguments)
{
    QString error;
    const std::optional<RecordingVerb> verb = RecordingVerb::parse(arguments, &error);
    if (!verb)
        return {2, {}, error};
    if (verb->rect)
        return recordRect(kind, *verb);
    if (!m_coordinator.canRecord(kind) && !m_coordinator.isRecording()) {
        m_coordinator.record(kind, verb->area);
        return {1, {}, QStringLiteral("glimpso: %1 recording is not available yet").arg(RecordingCoordinator::kindLabel(kind))};
    }
    m_coordinator.record(kind, verb->area);
    return {};
}

RecordingCommands::Reply RecordingCommands::recordRect(CaptureKind kind, const RecordingVerb &verb)
{
    if (m_coordinator.isRecording())
        return {1, {}, QStringLiteral("glimpso: a recording is running already; glimpso stop ends it")};
    const QScreen *primary = QGuiApplication::primaryScreen();
    const QRectF wanted = DesktopSpace(primary ? primary->geometry() : QRect()).toGlobal(QRectF(*verb.rect));
    const std::optional<RecordingScreen> screen =
        RecordingScreen::under(RecordingScreen::current(), wanted.center(), std::nullopt);
    if (!screen)
        return {1, {}, QStringLiteral("glimpso: the rectangle is on no display")};
    const QRectF rect = wanted.intersected(screen->frame);
    if (rect.width() < 1 || rect.height() < 1)
        return {1, {}, QStringLiteral("glimpso: the rectangle is on no display")};

    RecordingCoordinator::Overrides overrides;
    overrides.framesPerSecond = verb.framesPerSecond;
    overrides.maxSeconds = verb.seconds;
    overrides.action = verb.action;

    QEventLoop loop;
    Reply reply{1, {}, QStringLiteral("glimpso: the recording did not finish")};
    bool ended = false;
    const auto connection = QObject::connect(&m_coordinator, &RecordingCoordinator::recordingFlowEnded, &loop,
                                             [&](const QString &path, const QString &failure) {
                                                 ended = true;
                                                 if (!failure.isEmpty())
                                                     reply = {1, {}, QStringLiteral("glimpso: ") + failure};
                                                 else if (path.isEmpty())
                                                     reply = {1, {}, QStringLiteral("glimpso: the recording was cancelled")};
                                                 else
                                                     reply = {0, path + u'\n', {}};
                                                 loop.quit();
                                             });
    const bool started = kind == CaptureKind::gif ? m_coordinator.startGIF(rect, *screen, false, {}, overrides)
                                                  : m_coordinator.startVideo(rect, *screen, false, {}, overrides);
    if (started && !verb.wait) {
        QObject::disconnect(connection);
        return {};
    }
    // The answer waits for the file to be written (or the failure).
    if (started && !ended)
        loop.exec();
    QObject::disconnect(connection);
    return reply;
}

RecordingCommands::Reply RecordingCommands::stop()
{
    if (!m_coordinator.stopRecording())
        return {1, {}, QStringLiteral("glimpso: no recording is running")};
    return {};
}

RecordingCommands::Reply RecordingCommands::cancel()
{
    if (!m_coordinator.cancelRecording())
        return {1, {}, QStringLiteral("glimpso: no recording is running")};
    return {};
}
