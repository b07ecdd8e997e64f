#include "history/HeaderFactsCache.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

// The file: this magic, the format's version, the body, and the SHA-1 of the
// body, so that a torn or damaged file is told from a good one and ignored.
const QByteArray magic("glimpso history headers\n");
constexpr quint32 formatVersion = 1;
constexpr qsizetype digestSize = 20;
// The smallest an entry can take in the body, to refuse a count that can't be.
constexpr qsizetype smallestEntryBytes = 4 + 5 * 8 + 2 * 8 + 8;

QByteArray digest(const QByteArray &body)
{
    return QCryptographicHash::hash(body, QCryptographicHash::Sha1);
}

} // namespace

HeaderFactsCache::HeaderFactsCache(QString folder)
    : m_folder(std::move(folder))
{
}

QString HeaderFactsCache::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/glimpso/history-headers");
}

HeaderFactsCache HeaderFactsCache::load(const QString &file, const QString &folder)
{
    HeaderFactsCache empty(folder);
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly))
        return empty;
    const QByteArray bytes = input.readAll();
    const qsizetype bodyStart = magic.size() + 4;
    if (bytes.size() < bodyStart + digestSize || !bytes.startsWith(magic))
        return empty;
    const QByteArray body = bytes.mid(bodyStart, bytes.size() - bodyStart - digestSize);
    if (digest(body) != bytes.right(digestSize))
        return empty;
    QDataStream version(bytes.mid(magic.size(), 4));
    quint32 storedVersion = 0;
    version >> storedVersion;
    if (storedVersion != formatVersion)
        return empty;

    QDataStream in(body);
    in.setVersion(QDataStream::Qt_6_0);
    QString storedFolder;
    quint32 count = 0;
    in >> storedFolder >> count;
    if (in.status() != QDataStream::Ok || storedFolder != folder || qsizetype(count) > body.size() / smallestEntryBytes)
        return empty;
    HeaderFactsCache cache(folder);
    cache.m_entries.reserve(count);
    for (quint32 i = 0; i < count; ++i) {
        QByteArray name;
        Entry entry;
        in >> name >> entry.identity.device >> entry.identity.inode >> entry.identity.size >>
            entry.identity.modifiedNs >> entry.identity.changedNs >> entry.facts.pixelWidth >> entry.facts.pixelHeight >>
            entry.facts.seconds;
        if (in.status() != QDataStream::Ok)
            return empty;
        cache.m_entries.insert(QString::fromUtf8(name), entry);
    }
    if (!in.atEnd())
        return empty;
    return cache;
}

bool HeaderFactsCache::save(const QString &file) const
{
    QByteArray body;
    {
        QDataStream out(&body, QIODevice::WriteOnly);
        out.setVersion(QDataStream::Qt_6_0);
        out << m_folder << quint32(m_entries.size());
        for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it) {
            const Entry &entry = it.value();
            out << it.key().toUtf8() << entry.identity.device << entry.identity.inode << entry.identity.size
                << entry.identity.modifiedNs << entry.identity.changedNs << entry.facts.pixelWidth
                << entry.facts.pixelHeight << entry.facts.seconds;
        }
    }
    QByteArray version;
    QDataStream(&version, QIODevice::WriteOnly) << formatVersion;

    if (!QDir().mkpath(QFileInfo(file).absolutePath()))
        return false;
    QSaveFile output(file);
    if (!output.open(QIODevice::WriteOnly))
        return false;
    output.write(magic);
    output.write(version);
    output.write(body);
    output.write(digest(body));
    return output.commit();
}

std::optional<HeaderFactsCache::Facts> HeaderFactsCache::find(const QString &name,
                                                               const FileStatus::Identity &identity) const
{
    const auto it = m_entries.constFind(name);
    if (it == m_entries.cend() || !(it->identity == identity))
        return std::nullopt;
    return it->facts;
}

void HeaderFactsCache::insert(const QString &name, const FileStatus::Identity &identity, const Facts &facts)
{
    m_entries.insert(name, {identity, facts});
}
