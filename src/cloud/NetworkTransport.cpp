#include "cloud/NetworkTransport.h"

#include "cloud/TransportError.h"

#include <QBuffer>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

namespace glimpso::cloud {

namespace {

const QString kTimedOutText = QStringLiteral("The request timed out.");

struct ReplyDeleter
{
    void operator()(QNetworkReply *reply) const { reply->deleteLater(); }
};

const QString kStoppedText = QStringLiteral("The request was stopped.");
constexpr int kStopPollMs = 100;

void waitForFinished(QNetworkReply *reply, const std::function<bool()> &stopped)
{
    if (reply->isFinished())
        return;
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer poll;
    if (stopped) {
        QObject::connect(&poll, &QTimer::timeout, reply, [reply, &stopped] {
            if (stopped())
                reply->abort();
        });
        poll.start(kStopPollMs);
    }
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

} // namespace

NetworkTransport::NetworkTransport(int timeoutMs)
    : m_timeoutMs(timeoutMs)
{ }

NetworkTransport::~NetworkTransport() = default;

HttpResponse NetworkTransport::send(const HttpRequest &request, const QByteArray &body)
{
    QBuffer buffer;
    buffer.setData(body); // shares the bytes, no copy
    buffer.open(QIODevice::ReadOnly);
    return run(request, &buffer);
}

HttpResponse NetworkTransport::sendFile(const HttpRequest &request, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw TransportError(file.errorString());
    return run(request, &file);
}

QNetworkRequest NetworkTransport::networkRequest(const HttpRequest &request) const
{
    QNetworkRequest out(request.url);
    for (const HeaderField &field : request.headers)
        out.setRawHeader(field.name, field.value);
    out.setTransferTimeout(m_timeoutMs);
    // A redirect would carry a signature made for another URL; the status
    // goes back to the caller instead.
    out.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    return out;
}

HttpResponse NetworkTransport::run(const HttpRequest &request, QIODevice *body)
{
    if (stopped())
        throw TransportError(kStoppedText);
    if (!m_manager)
        m_manager = std::make_unique<QNetworkAccessManager>();
    const QByteArray method = request.method.isEmpty() ? QByteArray("GET") : request.method;
    std::unique_ptr<QNetworkReply, ReplyDeleter> reply(
        m_manager->sendCustomRequest(networkRequest(request), method, body));
    if (onUploadProgress) {
        QObject::connect(reply.get(), &QNetworkReply::uploadProgress, reply.get(),
            [this](qint64 sent, qint64 total) {
                // The reply ends with a report of 0 of 0, which is no progress.
                if (total > 0)
                    onUploadProgress(sent, total);
            });
    }
    std::function<bool()> stopFlag;
    if (m_stop)
        stopFlag = [this] { return stopped(); };
    waitForFinished(reply.get(), stopFlag);
    if (stopped())
        throw TransportError(kStoppedText);

    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid()) {
        switch (reply->error()) {
        case QNetworkReply::NoError:
            return HttpResponse { .isHttp = false };
        // The transfer time-out is the only thing that cancels our replies.
        case QNetworkReply::OperationCanceledError:
        case QNetworkReply::TimeoutError:
            throw TransportError(kTimedOutText, true);
        default:
            throw TransportError(reply->errorString());
        }
    }
    HttpResponse response;
    response.status = status.toInt();
    response.body = reply->readAll();
    response.etag = reply->rawHeader("ETag");
    return response;
}

} // namespace glimpso::cloud
