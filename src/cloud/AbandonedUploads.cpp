#include "cloud/AbandonedUploads.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>

Q_LOGGING_CATEGORY(lcAbandoned, "glimpso.AbandonedUploads", QtInfoMsg)

AbandonedUploads::AbandonedUploads(QString path) : m_path(std::move(path)) { }

QString AbandonedUploads::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/glimpso/abandoned-uploads.json");
}

void AbandonedUploads::add(const Entry &entry)
{
    const QMutexLocker lock(&m_mutex);
    QList<Entry> entries = load();
    if (entries.contains(entry))
        return;
    entries.append(entry);
    store(entries);
    qCInfo(lcAbandoned, "the parts of an unfinished upload to %s are released after the next upload",
           qUtf8Printable(entry.objectURL.toString()));
}

QList<AbandonedUploads::Entry> AbandonedUploads::entries() const
{
    const QMutexLocker lock(&m_mutex);
    return load();
}

int AbandonedUploads::retry(glimpso::cloud::S3CompatibleProvider &provider, const QDateTime &now)
{
    const QList<Entry> entries = this->entries();
    if (entries.isEmpty())
        return 0;
    // The bucket's own address: the object URL of an empty key.
    QString bucket;
    try {
        bucket = provider.objectURL(QString()).toString();
    } catch (...) {
        return 0;
    }
    // The requests go out without the lock, so that an upload that fails
    // meanwhile can still add its own entry.
    QList<Entry> gone;
    for (const Entry &entry : entries) {
        if (entry.since.addDays(keepDays) < now) {
            qCInfo(lcAbandoned, "gave up releasing an upload to %s", qUtf8Printable(entry.objectURL.toString()));
            gone.append(entry);
        } else if (entry.objectURL.toString().startsWith(bucket)
                   && provider.abortMultipartUpload(entry.objectURL, entry.uploadId)) {
            qCInfo(lcAbandoned, "released the parts of an unfinished upload to %s",
                   qUtf8Printable(entry.objectURL.toString()));
            gone.append(entry);
        }
    }
    if (gone.isEmpty())
        return 0;
    const QMutexLocker lock(&m_mutex);
    QList<Entry> kept = load();
    kept.removeIf([&gone](const Entry &entry) { return gone.contains(entry); });
    store(kept);
    return int(std::count_if(gone.cbegin(), gone.cend(),
                             [&now](const Entry &entry) { return entry.since.addDays(keepDays) >= now; }));
}

QList<AbandonedUploads::Entry> AbandonedUploads::load() const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return decode(file.readAll());
}

void AbandonedUploads::store(const QList<Entry> &entries) const
{
    if (entries.isEmpty()) {
        QFile::remove(m_path);
        return;
    }
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    QSaveFile file(m_path);
    const QByteArray bytes = encode(entries);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        qCCritical(lcAbandoned, "writing %s failed: %s", qUtf8Printable(m_path), qUtf8Printable(file.errorString()));
}

QByteArray AbandonedUploads::encode(const QList<Entry> &entries)
{
    QJsonArray array;
    for (const Entry &entry : entries) {
        QJsonObject object;
        object.insert(QStringLiteral("url"), entry.objectURL.toString(QUrl::FullyEncoded));
        object.insert(QStringLiteral("uploadId"), entry.uploadId);
        object.insert(QStringLiteral("since"), entry.since.toUTC().toString(Qt::ISODate));
        array.append(object);
    }
    return QJsonDocument(array).toJson(QJsonDocument::Indented);
}

QList<AbandonedUploads::Entry> AbandonedUploads::decode(const QByteArray &bytes)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    QList<Entry> entries;
    for (const QJsonValue &value : document.array()) {
        const QJsonObject object = value.toObject();
        const QUrl url(object.value(QStringLiteral("url")).toString(), QUrl::StrictMode);
        const QString uploadId = object.value(QStringLiteral("uploadId")).toString();
        const QDateTime since = QDateTime::fromString(object.value(QStringLiteral("since")).toString(), Qt::ISODate);
        if (!url.isValid() || url.host().isEmpty() || uploadId.isEmpty() || !since.isValid())
            continue;
        entries.append({url, uploadId, since});
    }
    return entries;
}
