#include "cloud/ObjectNames.h"

#include <QFileInfo>
#include <QMimeDatabase>
#include <QRandomGenerator>

namespace ObjectNames {

namespace {
// The 128-bit product of two 64-bit numbers; GCC and Clang have the type.
__extension__ typedef unsigned __int128 Wide;
} // namespace

quint64 secureRandom()
{
    // getrandom(2) or /dev/urandom underneath.
    return QRandomGenerator::system()->generate64();
}

quint64 uniformBelow(quint64 bound, const RandomSource &random)
{
    // Lemire's multiply-and-shift: the high word of the 128-bit product is the
    // number; a low word below 2^64 mod bound falls in the band that would
    // make some numbers likelier, and is drawn again.
    Wide product = static_cast<Wide>(random()) * bound;
    quint64 low = static_cast<quint64>(product);
    if (low < bound) {
        const quint64 threshold = (0 - bound) % bound;
        while (low < threshold) {
            product = static_cast<Wide>(random()) * bound;
            low = static_cast<quint64>(product);
        }
    }
    return static_cast<quint64>(product >> 64);
}

QString randomSlug(int length, const RandomSource &random)
{
    QString slug;
    slug.reserve(qMax(length, 0));
    for (int i = 0; i < length; ++i)
        slug.append(QLatin1Char(alphabet[uniformBelow(alphabetSize, random)]));
    return slug;
}

QString extensionOf(const QString &fileName)
{
    const QString name = QFileInfo(fileName).fileName();
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0)
        return {};
    return name.mid(dot + 1);
}

QString keyForFile(const QString &fileName, const RandomSource &random)
{
    return randomSlug(nameLength, random) + u'.' + extensionOf(fileName);
}

QString contentType(const QString &fileName, CaptureKind kind)
{
    if (kind == CaptureKind::gif)
        return QStringLiteral("image/gif");
    if (kind == CaptureKind::video)
        return QStringLiteral("video/mp4");
    const QString extension = extensionOf(fileName);
    if (extension.isEmpty())
        return QStringLiteral("application/octet-stream");
    const QMimeType type
        = QMimeDatabase().mimeTypeForFile(QStringLiteral("name.") + extension, QMimeDatabase::MatchExtension);
    if (!type.isValid() || type.isDefault())
        return QStringLiteral("application/octet-stream");
    return type.name();
}

} // namespace ObjectNames
