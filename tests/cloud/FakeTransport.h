#pragma once

#include "cloud/HttpTransport.h"

#include <QFileInfo>
#include <functional>
#include <vector>

namespace glimpso::cloud::test {

// A transport that records what it is asked to send and answers from a
// script. Bodies of parts are kept only as their size and first bytes, so a
// test of a 100 MiB file does not keep 100 MiB around.
class FakeTransport : public HttpTransport
{
public:
    struct Sent
    {
        HttpRequest request;
        qint64 bodySize = 0;
        QByteArray bodyStart; // up to 64 bytes
        QString filePath; // set for a body streamed from a file
    };

    // Answers a request; the default answers 200 with an ETag for parts, an
    // UploadId for the create call and an empty body otherwise.
    std::function<HttpResponse(const Sent &)> answer = defaultAnswer;
    std::vector<Sent> sent;

    HttpResponse send(const HttpRequest &request, const QByteArray &body) override
    {
        sent.push_back({ request, body.size(), body.left(64), {} });
        return answer(sent.back());
    }

    HttpResponse sendFile(const HttpRequest &request, const QString &path) override
    {
        sent.push_back({ request, QFileInfo(path).size(), {}, path });
        return answer(sent.back());
    }

    static HttpResponse defaultAnswer(const Sent &sent)
    {
        const QString query = sent.request.url.query();
        if (sent.request.method == "POST" && query == u"uploads")
            return { true, 200,
                "<InitiateMultipartUploadResult><UploadId>up+id/1</UploadId>"
                "</InitiateMultipartUploadResult>",
                {} };
        if (sent.request.method == "PUT" && query.startsWith(u"partNumber="))
            return { true, 200, {}, "\"etag-" + query.section(u'&', 0, 0).mid(11).toLatin1() + "\"" };
        return { true, 200, {}, {} };
    }
};

} // namespace glimpso::cloud::test
