#pragma once

#include "appbase/InstanceChannel.h"

#include <QJsonObject>
#include <QString>

#include <memory>

class QLocalServer;
class QLocalSocket;

// Running copies without a session bus: the copy that runs listens on a named
// socket in the user's runtime folder, and the others talk to it one JSON line
// at a time: {"op":"handOff"}, {"op":"claim","pid":"123"},
// {"op":"run","args":[...]} answered by {"status":0,"output":"","error":""}.
class LocalSocketInstanceChannel : public InstanceChannel
{
public:
    explicit LocalSocketInstanceChannel(QString socketPath = defaultSocketPath());
    ~LocalSocketInstanceChannel() override;

    static QString defaultSocketPath();

    QString name() const override { return QStringLiteral("a local socket"); }
    QStringList otherCopies() override;
    void postHandOff() override;
    void postClaim(const QString &processId) override;
    void observeHandOff(std::function<void()> action) override;
    void observeClaim(std::function<void(const QString &)> action) override;
    void askToQuit(const QString &copy) override;
    bool serveCommands(CommandHandler handler) override;
    std::optional<Reply> sendCommand(const QStringList &arguments, int timeoutMs) override;
    void withdraw() override;

private:
    std::optional<QJsonObject> exchange(const QJsonObject &request, int timeoutMs, bool expectAnswer);
    void listen();
    void retryListenLater();
    void serve(QLocalSocket *socket);
    QJsonObject answer(const QJsonObject &request);

    QString m_socketPath;
    std::unique_ptr<QLocalServer> m_server;
    std::function<void()> m_onHandOff;
    std::function<void(const QString &)> m_onClaim;
    CommandHandler m_commands;
    int m_listenAttempts = 0;
};
