#pragma once

#include "cloud/HttpRequest.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace glimpso::cloud {

// What the provider needs to know of an answer.
struct HttpResponse
{
    // False when the answer was not HTTP at all (no status line).
    bool isHttp = true;
    int status = 0;
    QByteArray body;
    // The "ETag" header as it stands, quotes included; empty when absent.
    QByteArray etag;
};

// Sends one request and waits for its answer. Headers go out exactly as the
// request holds them, since they are signed. Failures below HTTP are thrown
// as TransportError; any HTTP status, error or not, is a response.
class HttpTransport
{
public:
    virtual ~HttpTransport() = default;
    virtual HttpResponse send(const HttpRequest &request, const QByteArray &body) = 0;
    // Streams the body from the file at `path` without holding it in memory.
    virtual HttpResponse sendFile(const HttpRequest &request, const QString &path) = 0;

    // Bytes of the body sent so far, and of the whole body, while a request
    // goes out; called on the thread that sends. May be left empty.
    std::function<void(qint64 sent, qint64 total)> onUploadProgress;
};

} // namespace glimpso::cloud
