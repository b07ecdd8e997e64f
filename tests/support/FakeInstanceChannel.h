#pragma once

#include "appbase/InstanceChannel.h"

#include <QStringList>

#include <deque>

// An instance channel that records what was said on it, in order, and lets a
// test play the other copies.
class FakeInstanceChannel : public InstanceChannel
{
public:
    QStringList running;              // the other copies
    QStringList log;                  // "handOff", "claim:123", "observeClaim", "quit:copy", ...
    std::deque<QStringList> runningLater; // what otherCopies() answers on later calls
    std::optional<Reply> nextReply;
    QStringList lastCommand;
    std::function<void()> handOffAction;
    std::function<void(const QString &)> claimAction;
    CommandHandler commands;

    QString name() const override { return QStringLiteral("a fake channel"); }
    QStringList otherCopies() override
    {
        log << QStringLiteral("otherCopies");
        if (!runningLater.empty()) {
            running = runningLater.front();
            runningLater.pop_front();
        }
        return running;
    }
    void postHandOff() override { log << QStringLiteral("handOff"); }
    void postClaim(const QString &pid) override { log << QStringLiteral("claim:") + pid; }
    void observeHandOff(std::function<void()> action) override
    {
        log << QStringLiteral("observeHandOff");
        handOffAction = std::move(action);
    }
    void observeClaim(std::function<void(const QString &)> action) override
    {
        log << QStringLiteral("observeClaim");
        claimAction = std::move(action);
    }
    void askToQuit(const QString &copy) override { log << QStringLiteral("quit:") + copy; }
    bool serveCommands(CommandHandler handler) override
    {
        log << QStringLiteral("serve");
        commands = std::move(handler);
        return true;
    }
    std::optional<Reply> sendCommand(const QStringList &arguments, int) override
    {
        log << QStringLiteral("send:") + arguments.join(u' ');
        lastCommand = arguments;
        return nextReply;
    }
    void withdraw() override { log << QStringLiteral("withdraw"); }
};
