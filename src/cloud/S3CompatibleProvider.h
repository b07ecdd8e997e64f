#pragma once

#include "cloud/AWSSigV4.h"
#include "cloud/HttpTransport.h"
#include "cloud/UploadProvider.h"

#include <QDateTime>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace glimpso::cloud {

// Stores objects in an S3-compatible bucket with the plain S3 REST protocol:
// one PUT up to the multipart threshold, the multipart protocol above it.
// Built anew for each upload from a plain configuration; keeps no state
// between requests and shares nothing but the transport.
class S3CompatibleProvider : public UploadProvider
{
public:
    struct Config
    {
        QUrl endpoint; // scheme and host; any path is replaced by the object path
        QString region;
        QString bucket;
        QString keyPrefix; // a folder inside the bucket, may be empty
        QUrl publicBaseURL; // where public links point; empty for none
        bool pathStyle = true;
        QString accessKeyID; // may hold a colon ("account:user")
        QString secretAccessKey;
        QString displayName;
    };

    // A file larger than this, by even a byte, goes multipart.
    static constexpr qint64 kMultipartThreshold = 104'857'600;
    // Each read from the file, so each part but the last.
    static constexpr qint64 kPartSize = 16'777'216;
    // The most of an error answer that goes into the error text.
    static constexpr qsizetype kErrorExcerptBytes = 400;
    static constexpr int kRequestTimeoutMs = 60'000;

    // Without a transport, requests go through a NetworkTransport with the
    // 60 s request time-out.
    explicit S3CompatibleProvider(Config config, std::shared_ptr<HttpTransport> transport = {});

    UploadResult upload(const QByteArray &data, const QString &key, const QString &contentType) override;
    UploadResult uploadFile(const QString &filePath, const QString &key, const QString &contentType) override;
    QString displayName() const override { return m_config.displayName; }

    const Config &config() const { return m_config; }
    // Lets a tool or a test send a small file through the multipart protocol.
    void setMultipartThreshold(qint64 bytes) { m_multipartThreshold = bytes; }
    // The signing date; the current time unless a test fixes it.
    void setClock(std::function<QDateTime()> clock) { m_clock = std::move(clock); }

    // Bytes of the object stored so far and its size, while an upload runs;
    // called on the uploading thread. May be left empty.
    std::function<void(qint64 done, qint64 total)> onProgress;
    // A multipart upload whose abort did not get through after a failure: its
    // parts stay in the bucket until `abortMultipartUpload` succeeds later.
    // May be left empty.
    std::function<void(const QUrl &objectURL, const QString &uploadId)> onAbandoned;

    // Releases the parts of an unfinished multipart upload. True when the
    // server took the abort, or knows no such upload any more.
    bool abortMultipartUpload(const QUrl &objectURL, const QString &uploadId) noexcept;

    // The building blocks of the requests, pure and public so they can be
    // checked on their own.
    static QString join(const QString &prefix, const QString &key);
    QUrl objectURL(const QString &key) const;
    QUrl publicURL(const QString &key, const QUrl &fallback) const;
    static QUrl withQuery(const QUrl &url, const std::vector<std::pair<QString, QString>> &items);
    // Throws UploadFailed with "HTTP {status}: {message}" unless the status is 2xx.
    static void check(const HttpResponse &response);
    static std::optional<QString> xmlValue(const QString &name, const QByteArray &body);

private:
    UploadResult multipartUpload(const QString &filePath, qint64 size, const QUrl &objectURL,
        const QString &fullKey, const QString &contentType);
    void uploadParts(const QString &filePath, const QUrl &objectURL, const QString &uploadId,
        std::vector<QByteArray> &etags);
    void completeUpload(const QUrl &objectURL, const QString &uploadId, const std::vector<QByteArray> &etags);
    void abortUpload(const QUrl &objectURL, const QString &uploadId) noexcept;
    // Routes the transport's progress to onProgress, `offset` bytes into an object of `total`.
    void reportProgressFrom(qint64 offset, qint64 total);
    HttpResponse sendSigned(HttpRequest request, const QByteArray &body, const QByteArray &payloadHash);
    HttpRequest objectRequest(const QByteArray &method, const QUrl &url) const;
    AWSSigV4 signer() const;

    Config m_config;
    std::shared_ptr<HttpTransport> m_transport;
    qint64 m_multipartThreshold = kMultipartThreshold;
    std::function<QDateTime()> m_clock;
};

} // namespace glimpso::cloud
