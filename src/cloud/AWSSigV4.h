#pragma once

#include "cloud/HttpRequest.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>

namespace glimpso::cloud {

// Adds an AWS Signature Version 4 "Authorization" header to a request, signing
// with headers only. It is the one place of the cloud code that knows the
// scheme; it has no state and no network access, so it may be used on any thread.
//
// Two deliberate differences from the published algorithm: runs of blanks
// inside a header value are not collapsed, and every header the request
// carries at signing time is signed, with no list of exclusions. Hence the
// caller signs last, after setting every header it wants covered.
struct AWSSigV4
{
    QString accessKeyID;
    QString secretAccessKey;
    QString region;
    QString service;

    // The texts the signature is built from, for tools and tests to inspect.
    struct Signature
    {
        QByteArray canonicalRequest;
        QByteArray stringToSign;
        QByteArray authorization;
    };

    // Adds "Host" (when the request has none), "x-amz-date",
    // "x-amz-content-sha256" and "Authorization". `payloadHash` is the
    // lower-case hexadecimal SHA-256 of the body, or "UNSIGNED-PAYLOAD".
    // A request without a URL or without a host is left unchanged: it goes
    // out unsigned and the server refuses it.
    void sign(HttpRequest &request, const QByteArray &payloadHash, const QDateTime &date) const;

    // The signing proper over the headers the request already carries: it
    // adds only "Authorization". `sign` ends with it; the signing test suite,
    // whose requests bring their own date header, calls it directly.
    Signature authorize(HttpRequest &request, const QByteArray &payloadHash, const QByteArray &amzDate) const;

    // "yyyyMMddTHHmmssZ" in UTC.
    static QByteArray amzDate(const QDateTime &date);
    static QByteArray canonicalPath(const QUrl &url);
    static QByteArray canonicalQuery(const QUrl &url);
    static QByteArray hmac(const QByteArray &key, const QByteArray &data);
    static QByteArray sha256(const QByteArray &data);
    // Lower-case hexadecimal, two digits a byte.
    static QByteArray hex(const QByteArray &bytes);
    static QByteArray sha256Hex(const QByteArray &data);
    // Percent-encodes the UTF-8 of `text`, leaving only ASCII letters and
    // digits, "-", "_", ".", "~" and the characters of `alsoAllowed` as they
    // are. This is the one encoding of the cloud code: paths, query items and
    // object keys all go through it. Letters beyond ASCII are always encoded,
    // as every S3 server encodes them when it rebuilds the canonical request.
    static QByteArray percentEncode(const QString &text, const QByteArray &alsoAllowed = {});
};

} // namespace glimpso::cloud
