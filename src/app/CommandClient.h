#pragma once

#include "app/CommandLine.h"
#include "appbase/InstanceChannel.h"

#include <QString>
#include <QStringList>

#include <functional>

// The command-line side of a verb: hand it to the running copy, starting one
// first when the verb needs it, and turn the answer into an exit code and text.
class CommandClient
{
public:
    struct Outcome {
        int exitCode = 0;
        QString output; // for standard output
        QString error;  // one line for standard error
    };

    static constexpr int answerTimeoutMs = 2000;
    static constexpr int startTimeoutMs = 5000;
    static constexpr int pollIntervalMs = 50;

    CommandClient(InstanceChannel &channel, std::function<bool()> startApplication);

    Outcome run(const CommandLine::Verb &verb, const QStringList &arguments);

private:
    bool waitForCopy();

    InstanceChannel &m_channel;
    std::function<bool()> m_startApplication;
};
