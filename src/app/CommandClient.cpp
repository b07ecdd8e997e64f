#include "app/CommandClient.h"

#include <QElapsedTimer>
#include <QThread>

CommandClient::CommandClient(InstanceChannel &channel, std::function<bool()> startApplication)
    : m_channel(channel)
    , m_startApplication(std::move(startApplication))
{
}

CommandClient::Outcome CommandClient::run(const CommandLine::Verb &verb, const QStringList &arguments)
{
    const bool running = !m_channel.otherCopies().isEmpty();
    if (!running) {
        if (!verb.startsApplication)
            return {0, {}, QStringLiteral("glimpso is not running")};
        if (!m_startApplication())
            return {1, {}, QStringLiteral("glimpso: could not start glimpso")};
        if (!waitForCopy())
            return {1, {}, QStringLiteral("glimpso: glimpso did not start within %1 s").arg(startTimeoutMs / 1000)};
    }
    const int timeoutMs = verb.answerTimeoutMs > 0 ? verb.answerTimeoutMs : answerTimeoutMs;
    const auto reply = m_channel.sendCommand(arguments, timeoutMs);
    if (!reply)
        return {1, {}, QStringLiteral("glimpso: the running copy did not answer within %1 s").arg(timeoutMs / 1000)};
    return {reply->status, reply->output, reply->error};
}

bool CommandClient::waitForCopy()
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < startTimeoutMs) {
        if (!m_channel.otherCopies().isEmpty())
            return true;
        QThread::msleep(pollIntervalMs);
    }
    return false;
}
