#include "HistoryTestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QProcess>

#include <libheif/heif.h>

#include <stdexcept>

namespace HistoryTestFiles {

namespace {

QImage picture(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height / 2, Qt::yellow);
    return image;
}

void save(const QImage &image, const QString &path, const char *format)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    if (!image.save(path, format))
        throw std::runtime_error("could not write " + path.toStdString());
}

} // namespace

void writePng(const QString &path, int width, int height)
{
    save(picture(width, height), path, "PNG");
}

void writeJpeg(const QString &path, int width, int height)
{
    save(picture(width, height), path, "JPEG");
}

void writeGif(const QString &path, int width, int height)
{
    // Qt has no GIF writer; the header is all the listing reads, but the file
    // must be a real GIF all the same, so ffmpeg writes it.
    QDir().mkpath(QFileInfo(path).absolutePath());
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y"),
                                            QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                                            QStringLiteral("testsrc=size=%1x%2:rate=5").arg(width).arg(height),
                                            QStringLiteral("-frames:v"), QStringLiteral("3"), path});
    if (!ffmpeg.waitForFinished(60000) || ffmpeg.exitCode() != 0)
        throw std::runtime_error("ffmpeg could not write " + path.toStdString());
}

bool writeHeic(const QString &path, int width, int height)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    heif_context *context = heif_context_alloc();
    heif_encoder *encoder = nullptr;
    bool written = false;
    if (heif_context_get_encoder_for_format(context, heif_compression_HEVC, &encoder).code == heif_error_Ok) {
        heif_image *image = nullptr;
        heif_image_create(width, height, heif_colorspace_RGB, heif_chroma_interleaved_RGB, &image);
        heif_image_add_plane(image, heif_channel_interleaved, width, height, 8);
        int stride = 0;
        uint8_t *pixels = heif_image_get_plane(image, heif_channel_interleaved, &stride);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                pixels[y * stride + x * 3] = static_cast<uint8_t>(x);
                pixels[y * stride + x * 3 + 1] = static_cast<uint8_t>(y);
                pixels[y * stride + x * 3 + 2] = 128;
            }
        }
        heif_encoder_set_lossy_quality(encoder, 50);
        written = heif_context_encode_image(context, image, encoder, nullptr, nullptr).code == heif_error_Ok &&
                  heif_context_write_to_file(context, QFile::encodeName(path).constData()).code == heif_error_Ok;
        heif_image_release(image);
        heif_encoder_release(encoder);
    }
    heif_context_free(context);
    return written;
}

bool writeVideo(const QString &path, double seconds, const QStringList &options)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QProcess ffmpeg;
    QStringList arguments{QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y"),
                          QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                          QStringLiteral("testsrc=size=64x48:rate=10"), QStringLiteral("-t"),
                          QString::number(seconds), QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p")};
    arguments += options;
    arguments << path;
    ffmpeg.start(QStringLiteral("ffmpeg"), arguments);
    return ffmpeg.waitForFinished(60000) && ffmpeg.exitStatus() == QProcess::NormalExit && ffmpeg.exitCode() == 0;
}

void writeBytes(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("could not write " + path.toStdString());
}

void setDate(const QString &path, const QDateTime &date)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) || !file.setFileTime(date, QFileDevice::FileModificationTime))
        throw std::runtime_error("could not date " + path.toStdString());
}

} // namespace HistoryTestFiles

HistoryTestHome::HistoryTestHome()
    : m_oldHome(qgetenv("HOME"))
    , m_oldDataHome(qgetenv("XDG_DATA_HOME"))
    , m_oldCacheHome(qgetenv("XDG_CACHE_HOME"))
{
    // The Trash of the home's file system is the one in $XDG_DATA_HOME, so a
    // home inside the temporary folder keeps trashed files in there too.
    const QString home = m_dir.filePath(QStringLiteral("home"));
    QDir().mkpath(saveFolder());
    qputenv("HOME", QFile::encodeName(home));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home + QStringLiteral("/.local/share")));
    // The store's header cache goes to the test's home too, not the runner's.
    qputenv("XDG_CACHE_HOME", QFile::encodeName(home + QStringLiteral("/.cache")));
    m_settings = std::make_unique<AppSettings>(m_storage, m_loginItem);
    m_settings->setSaveDirectory(saveFolder());
}

HistoryTestHome::~HistoryTestHome()
{
    qputenv("HOME", m_oldHome);
    if (m_oldDataHome.isNull())
        qunsetenv("XDG_DATA_HOME");
    else
        qputenv("XDG_DATA_HOME", m_oldDataHome);
    if (m_oldCacheHome.isNull())
        qunsetenv("XDG_CACHE_HOME");
    else
        qputenv("XDG_CACHE_HOME", m_oldCacheHome);
}
