#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace glimpso::cloud {

// Where an uploaded object ended up.
struct UploadResult
{
    QUrl url; // the link to hand out
    QString key; // the full object key inside the bucket, prefix included
};

// A place to upload to. Both uploads run their requests one after the other
// and return when the object is stored; call them off the main thread.
// Failures are thrown: UploadFailed for what the server or protocol refused,
// TransportError for what the network layer reports.
class UploadProvider
{
public:
    virtual ~UploadProvider() = default;
    virtual UploadResult upload(const QByteArray &data, const QString &key, const QString &contentType) = 0;
    virtual UploadResult uploadFile(const QString &filePath, const QString &key, const QString &contentType)
        = 0;
    virtual QString displayName() const = 0;
};

} // namespace glimpso::cloud
