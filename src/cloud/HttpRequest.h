#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

namespace glimpso::cloud {

// One header as it will go on the wire: the name keeps the case it was given.
struct HeaderField
{
    QByteArray name;
    QByteArray value;
};

// An outgoing HTTP request before it is handed to a transport: the signer
// reads and extends its headers, the transport sends them as they stand.
// Header names are matched without regard to case, as HTTP does, but each
// field keeps the spelling it was set with.
struct HttpRequest
{
    QByteArray method;
    QUrl url;
    QList<HeaderField> headers;

    bool hasHeader(const QByteArray &name) const;
    QByteArray header(const QByteArray &name) const;
    // Replaces the value of a field with the same name, or appends a new field.
    void setHeader(const QByteArray &name, const QByteArray &value);
    // A repeated field joins the existing one, comma-separated, as HTTP
    // folds repeated fields into one.
    void addHeader(const QByteArray &name, const QByteArray &value);
};

} // namespace glimpso::cloud
