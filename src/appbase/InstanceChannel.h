#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

// How running copies of glimpso find and talk to each other: the session bus
// where there is one, a named local socket where there is none.
//
// A "copy" is an opaque id of another running process of glimpso. Messages:
// "handOff" (a second launch asks the running copy to take over), "claim" with
// a process id (a new copy replaces the others) and commands (the verbs of the
// command line).
class InstanceChannel
{
public:
    struct Reply {
        int status = 0;   // the exit code of the command line
        QString output;   // printed on standard output
        QString error;    // one line printed on standard error
    };
    using CommandHandler = std::function<Reply(const QStringList &arguments)>;

    virtual ~InstanceChannel() = default;

    virtual QString name() const = 0;

    // Other copies that run now; a copy that is shutting down has left already.
    virtual QStringList otherCopies() = 0;

    virtual void postHandOff() = 0;
    virtual void postClaim(const QString &processId) = 0;
    virtual void observeHandOff(std::function<void()> action) = 0;
    virtual void observeClaim(std::function<void(const QString &processId)> action) = 0;
    virtual void askToQuit(const QString &copy) = 0;

    // The running copy answers the command line through this.
    virtual bool serveCommands(CommandHandler handler) = 0;
    // The command-line side: send to the running copy; nothing when none answers in time.
    virtual std::optional<Reply> sendCommand(const QStringList &arguments, int timeoutMs) = 0;

    // Stop being found, before the process ends, so a copy that is shutting down
    // no longer counts as running.
    virtual void withdraw() = 0;
};
