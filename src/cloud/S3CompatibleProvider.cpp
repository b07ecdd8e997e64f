#include "cloud/S3CompatibleProvider.h"

#include "cloud/NetworkTransport.h"
#include "cloud/TransportError.h"
#include "cloud/UploadFailed.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStringDecoder>

#include <algorithm>

namespace glimpso::cloud {

namespace {

Q_LOGGING_CATEGORY(lcUpload, "glimpso.S3Upload")

const QByteArray kCacheControl = "public, max-age=31536000, immutable";
const QByteArray kUnsignedPayload = "UNSIGNED-PAYLOAD";
const QString kSigningService = QStringLiteral("s3");

// Strict UTF-8: a byte sequence cut in the middle of a character fails.
std::optional<QString> decodeUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

QByteArray partEntry(std::size_t number, const QByteArray &etag)
{
    return "<Part><PartNumber>" + QByteArray::number(qulonglong(number)) + "</PartNumber><ETag>" + etag
        + "</ETag></Part>";
}

// Leaves the transport without a progress handler when an upload is over,
// however it ends: the handler points at the provider.
class ProgressScope
{
public:
    explicit ProgressScope(HttpTransport &transport) : m_transport(transport) { }
    ~ProgressScope() { m_transport.onUploadProgress = {}; }
    ProgressScope(const ProgressScope &) = delete;
    ProgressScope &operator=(const ProgressScope &) = delete;

private:
    HttpTransport &m_transport;
};

} // namespace

S3CompatibleProvider::S3CompatibleProvider(Config config, std::shared_ptr<HttpTransport> transport)
    : m_config(std::move(config))
    , m_transport(transport ? std::move(transport) : std::make_shared<NetworkTransport>(kRequestTimeoutMs))
    , m_clock([] { return QDateTime::currentDateTimeUtc(); })
{ }

UploadResult S3CompatibleProvider::upload(
    const QByteArray &data, const QString &key, const QString &contentType)
{
    const QString fullKey = join(m_config.keyPrefix, key);
    const QUrl url = objectURL(fullKey);

    const ProgressScope progress(*m_transport);
    HttpRequest request = objectRequest("PUT", url);
    request.setHeader("Content-Type", contentType.toUtf8());
    request.setHeader("Content-Length", QByteArray::number(data.size()));
    request.setHeader("Cache-Control", kCacheControl);
    signer().sign(request, AWSSigV4::sha256Hex(data), m_clock());

    qCInfo(lcUpload, "PUT %s (%lld bytes)", qUtf8Printable(url.toString()), qlonglong(data.size()));
    reportProgressFrom(0, data.size());
    const HttpResponse response = m_transport->send(request, data);
    if (response.isHttp && (response.status < 200 || response.status > 299))
        qCCritical(lcUpload, "upload failed: HTTP %d %s", response.status,
            qUtf8Printable(QString::fromUtf8(response.body.left(kErrorExcerptBytes))));
    check(response);
    return { publicURL(fullKey, url), fullKey };
}

UploadResult S3CompatibleProvider::uploadFile(
    const QString &filePath, const QString &key, const QString &contentType)
{
    const QString fullKey = join(m_config.keyPrefix, key);
    const QUrl url = objectURL(fullKey);
    const QFileInfo info(filePath);
    const qint64 size = info.exists() ? info.size() : 0;
    const ProgressScope progress(*m_transport);

    if (size > m_multipartThreshold)
        return multipartUpload(filePath, size, url, fullKey, contentType);

    HttpRequest request = objectRequest("PUT", url);
    request.setHeader("Content-Type", contentType.toUtf8());
    request.setHeader("Content-Length", QByteArray::number(size));
    request.setHeader("Cache-Control", kCacheControl);
    // Streamed from disk and therefore not hashed.
    signer().sign(request, kUnsignedPayload, m_clock());

    qCInfo(lcUpload, "PUT file %s (%lld bytes)", qUtf8Printable(url.toString()), qlonglong(size));
    reportProgressFrom(0, size);
    check(m_transport->sendFile(request, filePath));
    return { publicURL(fullKey, url), fullKey };
}

UploadResult S3CompatibleProvider::multipartUpload(const QString &filePath, qint64 size,
    const QUrl &objectURL, const QString &fullKey, const QString &contentType)
{
    HttpRequest create = objectRequest("POST", withQuery(objectURL, { { QStringLiteral("uploads"), {} } }));
    create.setHeader("Content-Type", contentType.toUtf8());
    create.setHeader("Cache-Control", kCacheControl);
    const HttpResponse created = sendSigned(create, {}, AWSSigV4::sha256Hex({}));
    check(created);
    const std::optional<QString> uploadId = xmlValue(QStringLiteral("UploadId"), created.body);
    if (!uploadId)
        throw UploadFailed(QStringLiteral("No upload id from the server"));
    qCInfo(lcUpload, "multipart upload of %lld bytes started", qlonglong(size));

    try {
        std::vector<QByteArray> etags;
        uploadParts(filePath, objectURL, *uploadId, etags);
        completeUpload(objectURL, *uploadId, etags);
    } catch (...) {
        // The parts stored so far are released; what the user sees is the
        // first failure, not whatever the abort met.
        abortUpload(objectURL, *uploadId);
        throw;
    }
    return { publicURL(fullKey, objectURL), fullKey };
}

void S3CompatibleProvider::uploadParts(
    const QString &filePath, const QUrl &objectURL, const QString &uploadId, std::vector<QByteArray> &etags)
{
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly))
        throw TransportError(file.errorString());
    const qint64 size = file.size();

    for (std::size_t number = 1;; ++number) {
        const qint64 offset = file.pos();
        // One part in memory at a time: the next is read only after the
        // previous one is acknowledged and released.
        const QByteArray part = file.read(kPartSize);
        if (part.isEmpty())
            break;
        const QUrl url = withQuery(objectURL,
            { { QStringLiteral("partNumber"), QString::number(number) },
                { QStringLiteral("uploadId"), uploadId } });
        HttpRequest request = objectRequest("PUT", url);
        request.setHeader("Content-Length", QByteArray::number(part.size()));
        reportProgressFrom(offset, size);
        const HttpResponse response = sendSigned(request, part, kUnsignedPayload);
        check(response);
        if (response.etag.isEmpty())
            throw UploadFailed(QStringLiteral("No ETag for part %1").arg(number));
        etags.push_back(response.etag);
    }
}

void S3CompatibleProvider::completeUpload(
    const QUrl &objectURL, const QString &uploadId, const std::vector<QByteArray> &etags)
{
    // No XML declaration, no line breaks, nothing escaped: ETags are quoted
    // hexadecimal and part numbers are digits.
    m_transport->onUploadProgress = {};
    QByteArray body = "<CompleteMultipartUpload>";
    for (std::size_t i = 0; i < etags.size(); ++i)
        body += partEntry(i + 1, etags[i]);
    body += "</CompleteMultipartUpload>";

    HttpRequest request
        = objectRequest("POST", withQuery(objectURL, { { QStringLiteral("uploadId"), uploadId } }));
    request.setHeader("Content-Type", "application/xml");
    const HttpResponse response = sendSigned(request, body, AWSSigV4::sha256Hex(body));
    check(response);
    // A server may answer 200 and still report the failure in the body.
    if (xmlValue(QStringLiteral("Code"), response.body)) {
        throw UploadFailed(xmlValue(QStringLiteral("Message"), response.body)
                               .value_or(QStringLiteral("The upload couldn't be completed")));
    }
}

void S3CompatibleProvider::abortUpload(const QUrl &objectURL, const QString &uploadId) noexcept
{
    // The caller reports the first error, whatever happens here; an abort that
    // does not get through is handed on so that it can be tried again later.
    if (abortMultipartUpload(objectURL, uploadId) || !onAbandoned)
        return;
    try {
        onAbandoned(objectURL, uploadId);
    } catch (...) {
    }
}

bool S3CompatibleProvider::abortMultipartUpload(const QUrl &objectURL, const QString &uploadId) noexcept
{
    try {
        if (m_transport)
            m_transport->onUploadProgress = {};
        HttpRequest request
            = objectRequest("DELETE", withQuery(objectURL, { { QStringLiteral("uploadId"), uploadId } }));
        const HttpResponse response = sendSigned(request, {}, AWSSigV4::sha256Hex({}));
        // 404: the server knows no such upload any more, so nothing is left.
        return response.isHttp && ((response.status >= 200 && response.status <= 299) || response.status == 404);
    } catch (...) {
        return false;
    }
}

void S3CompatibleProvider::reportProgressFrom(qint64 offset, qint64 total)
{
    if (!onProgress) {
        m_transport->onUploadProgress = {};
        return;
    }
    m_transport->onUploadProgress = [this, offset, total](qint64 sent, qint64) {
        onProgress(std::min(offset + sent, total), total);
    };
}

HttpResponse S3CompatibleProvider::sendSigned(
    HttpRequest request, const QByteArray &body, const QByteArray &payloadHash)
{
    signer().sign(request, payloadHash, m_clock());
    return m_transport->send(request, body);
}

HttpRequest S3CompatibleProvider::objectRequest(const QByteArray &method, const QUrl &url) const
{
    HttpRequest request;
    request.method = method;
    request.url = url;
    return request;
}

AWSSigV4 S3CompatibleProvider::signer() const
{
    return { m_config.accessKeyID, m_config.secretAccessKey, m_config.region, kSigningService };
}

QString S3CompatibleProvider::join(const QString &prefix, const QString &key)
{
    auto isEdge = [](QChar c) { return c == u'/' || c == u' '; };
    qsizetype begin = 0;
    qsizetype end = prefix.size();
    while (begin < end && isEdge(prefix.at(begin)))
        ++begin;
    while (end > begin && isEdge(prefix.at(end - 1)))
        --end;
    const QString folder = prefix.mid(begin, end - begin);
    return folder.isEmpty() ? key : folder + u'/' + key;
}

QUrl S3CompatibleProvider::objectURL(const QString &key) const
{
    const QString encodedKey = QString::fromLatin1(AWSSigV4::percentEncode(key, "/"));
    if (!m_config.endpoint.isValid() || m_config.endpoint.host().isEmpty())
        throw UploadFailed(QStringLiteral("Invalid endpoint URL"));

    QUrl url = m_config.endpoint;
    if (m_config.pathStyle) {
        // The bucket goes in as it is: bucket names are plain DNS labels.
        url.setPath(u'/' + m_config.bucket + u'/' + encodedKey, QUrl::TolerantMode);
    } else {
        url.setHost(m_config.bucket + u'.' + m_config.endpoint.host());
        url.setPath(u'/' + encodedKey, QUrl::TolerantMode);
    }
    if (!url.isValid())
        throw UploadFailed(QStringLiteral("Invalid object URL"));
    return url;
}

QUrl S3CompatibleProvider::publicURL(const QString &key, const QUrl &fallback) const
{
    if (m_config.publicBaseURL.isEmpty() || !m_config.publicBaseURL.isValid())
        return fallback;
    // Built, not requested: nothing checks that the link resolves.
    const QString encodedKey = QString::fromLatin1(AWSSigV4::percentEncode(key, "/"));
    QUrl url = m_config.publicBaseURL;
    QString path = url.path(QUrl::FullyEncoded);
    if (!path.endsWith(u'/'))
        path += u'/';
    url.setPath(path + encodedKey, QUrl::TolerantMode);
    return url.adjusted(QUrl::NormalizePathSegments);
}

QUrl S3CompatibleProvider::withQuery(const QUrl &url, const std::vector<std::pair<QString, QString>> &items)
{
    if (!url.isValid())
        return url;
    QStringList parts;
    for (const auto &[name, value] : items) {
        // The create call is "?uploads" with no "=": that is how S3 spells it.
        if (value.isEmpty() && name == u"uploads")
            parts.append(name);
        else
            parts.append(
                QString::fromLatin1(AWSSigV4::percentEncode(name) + '=' + AWSSigV4::percentEncode(value)));
    }
    QUrl out = url;
    out.setQuery(parts.join(u'&'), QUrl::TolerantMode);
    return out;
}

void S3CompatibleProvider::check(const HttpResponse &response)
{
    if (!response.isHttp)
        throw UploadFailed(QStringLiteral("No HTTP response"));
    if (response.status >= 200 && response.status <= 299)
        return;
    // A cut through a multi-byte character makes the excerpt undecodable,
    // and then the message is empty rather than garbled.
    const QString excerpt = decodeUtf8(response.body.left(kErrorExcerptBytes)).value_or(QString());
    const QString openTag = QStringLiteral("<Message>");
    QString message = excerpt;
    const qsizetype open = excerpt.indexOf(openTag);
    if (open >= 0) {
        const qsizetype start = open + openTag.size();
        const qsizetype close = excerpt.indexOf(u"</Message>", start);
        if (close >= 0)
            message = excerpt.mid(start, close - start);
    }
    throw UploadFailed(QStringLiteral("HTTP %1: %2").arg(response.status).arg(message));
}

std::optional<QString> S3CompatibleProvider::xmlValue(const QString &name, const QByteArray &body)
{
    // A plain text search on purpose: attributes, namespaces and entities are
    // not understood, and entities stay as they are.
    const std::optional<QString> text = decodeUtf8(body);
    if (!text)
        return std::nullopt;
    const QString openTag = u'<' + name + u'>';
    const QString closeTag = u"</" + name + u'>';
    const qsizetype open = text->indexOf(openTag);
    if (open < 0)
        return std::nullopt;
    const qsizetype start = open + openTag.size();
    const qsizetype close = text->indexOf(closeTag, start);
    if (close < 0)
        return std::nullopt;
    return text->mid(start, close - start);
}

} // namespace glimpso::cloud
