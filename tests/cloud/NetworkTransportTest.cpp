#include "cloud/NetworkTransport.h"

#include "cloud/TransportError.h"

#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryFile>
#include <QThread>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

using namespace glimpso::cloud;

namespace {

// A one-connection-at-a-time HTTP server on 127.0.0.1 that records each
// request as raw bytes and answers from a script. It runs in the test's own
// thread: the transport's wait for its reply is what drives it.
class ScriptedServer : public QObject
{
public:
    // Raw answer for a raw request; an empty answer means "never answer".
    std::function<QByteArray(const QByteArray &)> answer
        = [](const QByteArray &) { return QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"); };
    QList<QByteArray> requests;

    ScriptedServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
        });
    }

    quint16 port() const { return m_server.serverPort(); }
    QUrl url(const QString &path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port()).arg(path));
    }

private:
    void read(QTcpSocket *socket)
    {
        QByteArray &pending = m_pending[socket];
        pending += socket->readAll();
        const qsizetype headEnd = pending.indexOf("\r\n\r\n");
        if (headEnd < 0)
            return;
        const qsizetype length = contentLength(pending.left(headEnd));
        if (pending.size() < headEnd + 4 + length)
            return;
        const QByteArray request = pending.left(headEnd + 4 + length);
        pending.remove(0, request.size());
        requests.append(request);
        const QByteArray reply = answer(request);
        if (!reply.isEmpty())
            socket->write(reply);
    }

    static qsizetype contentLength(const QByteArray &head)
    {
        for (const QByteArray &line : head.split('\n'))
            if (line.toLower().startsWith("content-length:"))
                return line.mid(15).trimmed().toLongLong();
        return 0;
    }

    QTcpServer m_server;
    QHash<QTcpSocket *, QByteArray> m_pending;
};

HttpRequest requestTo(const QUrl &url, const QByteArray &method)
{
    HttpRequest request;
    request.method = method;
    request.url = url;
    return request;
}

} // namespace

TEST(NetworkTransport, SendsTheHeadersAsGivenWithTheHostAndItsPort)
{
    ScriptedServer server;
    NetworkTransport transport;
    HttpRequest request = requestTo(server.url("/bucket/a%20b"), "PUT");
    const QByteArray host = "127.0.0.1:" + QByteArray::number(server.port());
    request.setHeader("Host", host);
    request.setHeader("Content-Length", "5");
    request.setHeader("x-amz-content-sha256", "UNSIGNED-PAYLOAD");
    request.setHeader("Authorization", "AWS4-HMAC-SHA256 Credential=test:tester/x");

    transport.send(request, "hello");

    ASSERT_EQ(server.requests.size(), 1);
    const QByteArray raw = server.requests.first();
    EXPECT_TRUE(raw.startsWith("PUT /bucket/a%20b HTTP/1.1\r\n"));
    EXPECT_EQ(raw.count(QByteArray("Host: " + host + "\r\n")), 1);
    EXPECT_EQ(raw.toLower().count("\r\nhost:"), 1);
    EXPECT_TRUE(raw.contains("\r\nx-amz-content-sha256: UNSIGNED-PAYLOAD\r\n"));
    EXPECT_TRUE(raw.contains("\r\nAuthorization: AWS4-HMAC-SHA256 Credential=test:tester/x\r\n"));
    EXPECT_TRUE(raw.endsWith("\r\n\r\nhello"));
}

TEST(NetworkTransport, ExposesTheStatusBodyAndETagAsTheyStand)
{
    ScriptedServer server;
    server.answer = [](const QByteArray &) {
        return QByteArray("HTTP/1.1 200 OK\r\nETag: \"9b2cf535f27731c974343645a3985328\"\r\n"
                          "Content-Length: 4\r\n\r\nbody");
    };
    NetworkTransport transport;
    const HttpResponse response = transport.send(requestTo(server.url("/b/k"), "PUT"), "x");
    EXPECT_TRUE(response.isHttp);
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.body, "body");
    EXPECT_EQ(response.etag, "\"9b2cf535f27731c974343645a3985328\"");
}

TEST(NetworkTransport, ReturnsAnErrorStatusAsAResponse)
{
    ScriptedServer server;
    server.answer = [](const QByteArray &) {
        return QByteArray("HTTP/1.1 403 Forbidden\r\nContent-Length: 7\r\n\r\ndenied!");
    };
    NetworkTransport transport;
    const HttpResponse response = transport.send(requestTo(server.url("/b/k"), "PUT"), "x");
    EXPECT_EQ(response.status, 403);
    EXPECT_EQ(response.body, "denied!");
}

TEST(NetworkTransport, HandsARedirectBackInsteadOfFollowingIt)
{
    ScriptedServer server;
    server.answer = [](const QByteArray &) {
        return QByteArray("HTTP/1.1 307 Temporary Redirect\r\nLocation: http://127.0.0.1:1/x\r\n"
                          "Content-Length: 0\r\n\r\n");
    };
    NetworkTransport transport;
    EXPECT_EQ(transport.send(requestTo(server.url("/b/k"), "PUT"), "x").status, 307);
    EXPECT_EQ(server.requests.size(), 1);
}

TEST(NetworkTransport, StreamsTheBodyOfAFile)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    QByteArray content;
    for (int i = 0; i < 20000; ++i)
        content += QByteArray::number(i) + ',';
    file.write(content);
    file.flush();

    ScriptedServer server;
    NetworkTransport transport;
    HttpRequest request = requestTo(server.url("/b/file"), "PUT");
    request.setHeader("Content-Length", QByteArray::number(content.size()));
    const HttpResponse response = transport.sendFile(request, file.fileName());

    EXPECT_EQ(response.status, 200);
    ASSERT_EQ(server.requests.size(), 1);
    EXPECT_TRUE(server.requests.first().endsWith(QByteArray("\r\n\r\n" + content)));
}

TEST(NetworkTransport, FailsWithATimeOutWhenTheServerStopsAnswering)
{
    ScriptedServer server;
    server.answer = [](const QByteArray &) { return QByteArray(); };
    NetworkTransport transport(200);
    try {
        transport.send(requestTo(server.url("/b/k"), "PUT"), "x");
        ADD_FAILURE() << "no time-out";
    } catch (const TransportError &error) {
        EXPECT_TRUE(error.timedOut());
        EXPECT_EQ(error.text(), "The request timed out.");
    }
}

TEST(NetworkTransport, FailsWithTheNetworkTextWhenNobodyListens)
{
    quint16 port = 0;
    {
        QTcpServer closed;
        closed.listen(QHostAddress::LocalHost);
        port = closed.serverPort();
    }
    NetworkTransport transport;
    const QUrl url(QStringLiteral("http://127.0.0.1:%1/b/k").arg(port));
    try {
        transport.send(requestTo(url, "PUT"), "x");
        ADD_FAILURE() << "no error";
    } catch (const TransportError &error) {
        EXPECT_FALSE(error.timedOut());
        EXPECT_FALSE(error.text().isEmpty());
    }
}

TEST(NetworkTransport, FailsWhenTheFileCannotBeOpened)
{
    NetworkTransport transport;
    EXPECT_THROW(
        transport.sendFile(requestTo(QUrl("http://127.0.0.1:1/b/k"), "PUT"), "/nonexistent/glimpso/file"),
        TransportError);
}

TEST(NetworkTransport, WorksOnAThreadOfItsOwn)
{
    // The way the upload service runs an upload: off the main thread, which
    // stays free (here it serves the scripted server).
    ScriptedServer server;
    HttpResponse response;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        NetworkTransport transport;
        response = transport.send(requestTo(server.url("/b/k"), "PUT"), "x");
    }));
    QEventLoop loop;
    QObject::connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(30'000, &loop, &QEventLoop::quit); // hang guard only
    worker->start();
    loop.exec();
    ASSERT_TRUE(worker->wait(1000));
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(server.requests.size(), 1);
}

TEST(NetworkTransport, AStopEndsTheRequestUnderWayAndEveryOneAfter)
{
    ScriptedServer server;
    server.answer = [](const QByteArray &) { return QByteArray(); }; // never answers
    NetworkTransport transport(60'000);
    auto stop = std::make_shared<std::atomic<bool>>(false);
    transport.setStopFlag(stop);
    // Set from elsewhere once the request is on its way.
    QTimer::singleShot(200, [stop] { stop->store(true); });
    try {
        transport.send(requestTo(server.url("/b/k"), "PUT"), "x");
        ADD_FAILURE() << "no error";
    } catch (const TransportError &error) {
        EXPECT_EQ(error.text(), "The request was stopped.");
        EXPECT_FALSE(error.timedOut());
    }
    EXPECT_THROW(transport.send(requestTo(server.url("/b/k"), "PUT"), "x"), TransportError);
    EXPECT_EQ(server.requests.size(), 1);
}

TEST(NetworkTransport, ReportsTheProgressOfTheBody)
{
    ScriptedServer server;
    NetworkTransport transport;
    qint64 lastSent = 0;
    qint64 lastTotal = 0;
    transport.onUploadProgress = [&](qint64 sent, qint64 total) {
        lastSent = sent;
        lastTotal = total;
    };
    const QByteArray body(3 * 1024 * 1024, 'x');
    transport.send(requestTo(server.url("/b/k"), "PUT"), body);
    EXPECT_EQ(lastSent, body.size());
    EXPECT_EQ(lastTotal, body.size());
}
