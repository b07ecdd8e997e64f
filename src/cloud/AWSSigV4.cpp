#include "cloud/AWSSigV4.h"

#include <QUrlQuery>
#include <algorithm>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <utility>
#include <vector>

namespace glimpso::cloud {

namespace {

const QByteArray kAlgorithm = "AWS4-HMAC-SHA256";

// One encoded query item during canonicalisation.
struct Pair
{
    QByteArray k;
    QByteArray v;
};

// Blanks and tabs only: a line feed inside a value is kept.
QByteArray trimBlanks(const QByteArray &value)
{
    qsizetype begin = 0;
    qsizetype end = value.size();
    auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (begin < end && isBlank(value.at(begin)))
        ++begin;
    while (end > begin && isBlank(value.at(end - 1)))
        --end;
    return value.mid(begin, end - begin);
}

QByteArray hostWithPort(const QUrl &url)
{
    QByteArray host = url.host(QUrl::FullyEncoded).toUtf8();
    // An IPv6 address keeps its brackets, as on the wire.
    if (host.contains(':'))
        host = '[' + host + ']';
    // Only a port the URL names is written; nothing is assumed for the scheme.
    if (url.port() != -1)
        host += ':' + QByteArray::number(url.port());
    return host;
}

QByteArray joined(const std::vector<QByteArray> &parts, char separator)
{
    QByteArray out;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0)
            out += separator;
        out += parts[i];
    }
    return out;
}

} // namespace

void AWSSigV4::sign(HttpRequest &request, const QByteArray &payloadHash, const QDateTime &date) const
{
    if (!request.url.isValid() || request.url.host().isEmpty())
        return;
    const QByteArray stamp = amzDate(date);
    if (!request.hasHeader("Host"))
        request.headers.append({ "Host", hostWithPort(request.url) });
    request.setHeader("x-amz-date", stamp);
    request.setHeader("x-amz-content-sha256", payloadHash);
    authorize(request, payloadHash, stamp);
}

AWSSigV4::Signature AWSSigV4::authorize(
    HttpRequest &request, const QByteArray &payloadHash, const QByteArray &amzDate) const
{
    const QByteArray dateStamp = amzDate.left(8);

    std::vector<std::pair<QByteArray, QByteArray>> canonical;
    for (const HeaderField &field : std::as_const(request.headers))
        canonical.emplace_back(field.name.toLower(), trimBlanks(field.value));
    // Byte order of the lower-cased names; a stable sort keeps equal names in
    // the order they were set.
    std::stable_sort(
        canonical.begin(), canonical.end(), [](const auto &a, const auto &b) { return a.first < b.first; });

    std::vector<QByteArray> names;
    QByteArray canonicalHeaders;
    for (const auto &[name, value] : canonical) {
        names.push_back(name);
        canonicalHeaders += name + ':' + value + '\n';
    }
    const QByteArray signedHeaders = joined(names, ';');

    const QByteArray method = request.method.isEmpty() ? QByteArray("GET") : request.method;
    Signature result;
    result.canonicalRequest = joined({ method, canonicalPath(request.url), canonicalQuery(request.url),
                                         canonicalHeaders, signedHeaders, payloadHash },
        '\n');

    const QByteArray scope = dateStamp + '/' + region.toUtf8() + '/' + service.toUtf8() + "/aws4_request";
    result.stringToSign = joined({ kAlgorithm, amzDate, scope, sha256Hex(result.canonicalRequest) }, '\n');

    QByteArray key = hmac("AWS4" + secretAccessKey.toUtf8(), dateStamp);
    key = hmac(key, region.toUtf8());
    key = hmac(key, service.toUtf8());
    key = hmac(key, "aws4_request");
    const QByteArray signature = hex(hmac(key, result.stringToSign));

    result.authorization = kAlgorithm + " Credential=" + accessKeyID.toUtf8() + '/' + scope
        + ", SignedHeaders=" + signedHeaders + ", Signature=" + signature;
    request.setHeader("Authorization", result.authorization);
    return result;
}

QByteArray AWSSigV4::amzDate(const QDateTime &date)
{
    return date.toUTC().toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'")).toLatin1();
}

QByteArray AWSSigV4::canonicalPath(const QUrl &url)
{
    QString path = url.path(QUrl::FullyDecoded);
    if (path.isEmpty())
        path = QStringLiteral("/");
    // S3 takes the object path as it is: no removal of dot segments or
    // doubled slashes, each byte encoded exactly once.
    return percentEncode(path, "/");
}

QByteArray AWSSigV4::canonicalQuery(const QUrl &url)
{
    if (!url.hasQuery())
        return {};
    const QUrlQuery query(url);
    const auto items = query.queryItems(QUrl::FullyDecoded);
    if (items.isEmpty())
        return {};

    std::vector<Pair> pairs;
    pairs.reserve(items.size());
    for (const auto &[name, value] : items)
        pairs.push_back({ percentEncode(name), percentEncode(value) });
    std::sort(pairs.begin(), pairs.end(),
        [](const Pair &a, const Pair &b) { return a.k != b.k ? a.k < b.k : a.v < b.v; });

    std::vector<QByteArray> joinedPairs;
    for (const Pair &pair : pairs)
        joinedPairs.push_back(pair.k + '=' + pair.v); // "uploads" keeps its "="
    return joined(joinedPairs, '&');
}

QByteArray AWSSigV4::hmac(const QByteArray &key, const QByteArray &data)
{
    unsigned char out[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    HMAC(EVP_sha256(), key.constData(), int(key.size()),
        reinterpret_cast<const unsigned char *>(data.constData()), std::size_t(data.size()), out, &length);
    return QByteArray(reinterpret_cast<const char *>(out), qsizetype(length));
}

QByteArray AWSSigV4::sha256(const QByteArray &data)
{
    unsigned char out[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(data.constData(), std::size_t(data.size()), out, &length, EVP_sha256(), nullptr);
    return QByteArray(reinterpret_cast<const char *>(out), qsizetype(length));
}

QByteArray AWSSigV4::hex(const QByteArray &bytes)
{
    return bytes.toHex();
}

QByteArray AWSSigV4::sha256Hex(const QByteArray &data)
{
    return hex(sha256(data));
}

QByteArray AWSSigV4::percentEncode(const QString &text, const QByteArray &alsoAllowed)
{
    // Qt's own unreserved set is exactly ASCII letters, digits and "-._~".
    return QUrl::toPercentEncoding(text, alsoAllowed);
}

} // namespace glimpso::cloud
