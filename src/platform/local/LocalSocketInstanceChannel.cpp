#include "platform/local/LocalSocketInstanceChannel.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QTimer>

#include <unistd.h>

Q_LOGGING_CATEGORY(lcLocalInstance, "glimpso.LocalSocketInstanceChannel", QtInfoMsg)

namespace {
constexpr int connectTimeoutMs = 500;
constexpr int listenRetryMs = 100;
constexpr int listenAttempts = 50; // five seconds for a replaced copy to let go
} // namespace

LocalSocketInstanceChannel::LocalSocketInstanceChannel(QString socketPath)
    : m_socketPath(std::move(socketPath))
{
}

LocalSocketInstanceChannel::~LocalSocketInstanceChannel()
{
    withdraw();
}

QString LocalSocketInstanceChannel::defaultSocketPath()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder + QStringLiteral("/glimpso-%1.sock").arg(getuid());
}

std::optional<QJsonObject> LocalSocketInstanceChannel::exchange(const QJsonObject &request, int timeoutMs,
                                                                bool expectAnswer)
{
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (!socket.waitForConnected(connectTimeoutMs))
        return std::nullopt;
    socket.write(QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n');
    if (!socket.waitForBytesWritten(timeoutMs))
        return std::nullopt;
    if (!expectAnswer)
        return QJsonObject{};
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeoutMs))
            return std::nullopt;
    }
    return QJsonDocument::fromJson(socket.readLine()).object();
}

QStringList LocalSocketInstanceChannel::otherCopies()
{
    if (m_server && m_server->isListening())
        return {};
    QLocalSocket probe;
    probe.connectToServer(m_socketPath);
    if (probe.waitForConnected(connectTimeoutMs))
        return {m_socketPath};
    return {};
}

void LocalSocketInstanceChannel::postHandOff()
{
    exchange({{QStringLiteral("op"), QStringLiteral("handOff")}}, connectTimeoutMs, false);
}

void LocalSocketInstanceChannel::postClaim(const QString &processId)
{
    exchange({{QStringLiteral("op"), QStringLiteral("claim")}, {QStringLiteral("pid"), processId}},
             connectTimeoutMs, false);
}

void LocalSocketInstanceChannel::observeHandOff(std::function<void()> action)
{
    m_onHandOff = std::move(action);
    listen();
}

void LocalSocketInstanceChannel::observeClaim(std::function<void(const QString &)> action)
{
    m_onClaim = std::move(action);
    listen();
}

void LocalSocketInstanceChannel::askToQuit(const QString &)
{
    exchange({{QStringLiteral("op"), QStringLiteral("run")}, {QStringLiteral("args"), QJsonArray{QStringLiteral("quit")}}},
             connectTimeoutMs, false);
}

bool LocalSocketInstanceChannel::serveCommands(CommandHandler handler)
{
    m_commands = std::move(handler);
    listen();
    return true;
}

void LocalSocketInstanceChannel::listen()
{
    if (m_server && m_server->isListening())
        return;
    if (!m_server) {
        m_server = std::make_unique<QLocalServer>();
        m_server->setSocketOptions(QLocalServer::UserAccessOption);
        QObject::connect(m_server.get(), &QLocalServer::newConnection, m_server.get(), [this] {
            while (QLocalSocket *socket = m_server->nextPendingConnection())
                serve(socket);
        });
    }
    if (m_server->listen(m_socketPath)) {
        qCInfo(lcLocalInstance) << "answering on" << m_socketPath;
        return;
    }
    // A socket file nobody answers on is left from a copy that crashed.
    QLocalSocket probe;
    probe.connectToServer(m_socketPath);
    if (!probe.waitForConnected(connectTimeoutMs)) {
        QLocalServer::removeServer(m_socketPath);
        if (m_server->listen(m_socketPath)) {
            qCInfo(lcLocalInstance) << "answering on" << m_socketPath << "(a stale socket was removed)";
            return;
        }
    }
    retryListenLater();
}

void LocalSocketInstanceChannel::retryListenLater()
{
    // The copy being replaced is still on its way out.
    if (++m_listenAttempts > listenAttempts) {
        qCWarning(lcLocalInstance) << "cannot listen on" << m_socketPath << m_server->errorString();
        return;
    }
    QTimer::singleShot(listenRetryMs, m_server.get(), [this] { listen(); });
}

void LocalSocketInstanceChannel::serve(QLocalSocket *socket)
{
    QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
        if (!socket->canReadLine())
            return;
        const QJsonObject request = QJsonDocument::fromJson(socket->readLine()).object();
        const QJsonObject reply = answer(request);
        if (!reply.isEmpty()) {
            socket->write(QJsonDocument(reply).toJson(QJsonDocument::Compact) + '\n');
            socket->flush();
        }
        socket->disconnectFromServer();
    });
}

QJsonObject LocalSocketInstanceChannel::answer(const QJsonObject &request)
{
    const QString op = request.value(QStringLiteral("op")).toString();
    if (op == u"handOff") {
        if (m_onHandOff)
            m_onHandOff();
        return {};
    }
    if (op == u"claim") {
        if (m_onClaim)
            m_onClaim(request.value(QStringLiteral("pid")).toString());
        return {};
    }
    if (op == u"run" && m_commands) {
        QStringList arguments;
        for (const QJsonValue &value : request.value(QStringLiteral("args")).toArray())
            arguments << value.toString();
        const Reply reply = m_commands(arguments);
        return {{QStringLiteral("status"), reply.status},
                {QStringLiteral("output"), reply.output},
                {QStringLiteral("error"), reply.error}};
    }
    return {{QStringLiteral("status"), 2}, {QStringLiteral("error"), QStringLiteral("unknown request")}};
}

std::optional<InstanceChannel::Reply> LocalSocketInstanceChannel::sendCommand(const QStringList &arguments,
                                                                              int timeoutMs)
{
    const auto reply = exchange(
        {{QStringLiteral("op"), QStringLiteral("run")}, {QStringLiteral("args"), QJsonArray::fromStringList(arguments)}},
        timeoutMs, true);
    if (!reply || !reply->contains(QStringLiteral("status")))
        return std::nullopt;
    return Reply{reply->value(QStringLiteral("status")).toInt(), reply->value(QStringLiteral("output")).toString(),
                 reply->value(QStringLiteral("error")).toString()};
}

void LocalSocketInstanceChannel::withdraw()
{
    if (m_server && m_server->isListening())
        m_server->close();
}
