#pragma once

#include "cloud/HttpTransport.h"

#include <QNetworkRequest>

#include <atomic>
#include <memory>

class QIODevice;
class QNetworkAccessManager;

namespace glimpso::cloud {

// HttpTransport over QNetworkAccessManager. Each call waits for its answer in
// a local event loop, so an upload runs as a plain sequence of requests on
// whatever thread calls it; the manager belongs to that thread.
//
// The time-out is a transfer time-out: a request fails once no byte has
// moved for that long, so a large part that keeps making progress is fine.
class NetworkTransport : public HttpTransport
{
public:
    static constexpr int kDefaultTimeoutMs = 60'000;

    explicit NetworkTransport(int timeoutMs = kDefaultTimeoutMs);
    ~NetworkTransport() override;

    HttpResponse send(const HttpRequest &request, const QByteArray &body) override;
    HttpResponse sendFile(const HttpRequest &request, const QString &path) override;

    // Once the flag is set, from any thread, the request under way is dropped
    // within a tenth of a second and every request fails at once with
    // TransportError "The request was stopped.": how a quitting program ends
    // uploads that are still running.
    void setStopFlag(std::shared_ptr<const std::atomic<bool>> stop) { m_stop = std::move(stop); }

private:
    QNetworkRequest networkRequest(const HttpRequest &request) const;
    HttpResponse run(const HttpRequest &request, QIODevice *body);

    bool stopped() const { return m_stop && m_stop->load(); }

    int m_timeoutMs;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::shared_ptr<const std::atomic<bool>> m_stop;
};

} // namespace glimpso::cloud
