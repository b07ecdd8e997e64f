#include "cloud/HttpRequest.h"

namespace glimpso::cloud {

namespace {

bool sameName(const QByteArray &a, const QByteArray &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

} // namespace

bool HttpRequest::hasHeader(const QByteArray &name) const
{
    for (const HeaderField &field : headers)
        if (sameName(field.name, name))
            return true;
    return false;
}

QByteArray HttpRequest::header(const QByteArray &name) const
{
    for (const HeaderField &field : headers)
        if (sameName(field.name, name))
            return field.value;
    return {};
}

void HttpRequest::setHeader(const QByteArray &name, const QByteArray &value)
{
    for (HeaderField &field : headers) {
        if (sameName(field.name, name)) {
            field.value = value;
            return;
        }
    }
    headers.append({ name, value });
}

void HttpRequest::addHeader(const QByteArray &name, const QByteArray &value)
{
    for (HeaderField &field : headers) {
        if (sameName(field.name, name)) {
            field.value += ',' + value;
            return;
        }
    }
    headers.append({ name, value });
}

} // namespace glimpso::cloud
