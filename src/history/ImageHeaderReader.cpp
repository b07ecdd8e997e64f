#include "history/ImageHeaderReader.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <libheif/heif.h>

#include <memory>

namespace ImageHeaderReader {

namespace {

const QSize unknown(0, 0);

struct HeifContextDeleter {
    void operator()(heif_context *context) const { heif_context_free(context); }
};
struct HeifHandleDeleter {
    void operator()(heif_image_handle *handle) const { heif_image_handle_release(handle); }
};

QSize qtReaderSize(const QString &path, const QByteArray &format)
{
    // The size option of Qt's PNG and JPEG readers stops before the picture
    // data. Naming the format spares asking every reader whether it knows the file.
    QImageReader reader(path, format);
    const QSize size = reader.size();
    return size.isValid() ? size : unknown;
}

} // namespace

QSize gifSize(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return unknown;
    // "GIF87a" or "GIF89a", then the logical screen width and height, little-endian.
    const QByteArray header = file.read(10);
    if (header.size() < 10 || !(header.startsWith("GIF87a") || header.startsWith("GIF89a")))
        return unknown;
    const auto byte = [&](int i) { return static_cast<unsigned char>(header[i]); };
    return {byte(6) | byte(7) << 8, byte(8) | byte(9) << 8};
}

QSize heicSize(const QString &path)
{
    std::unique_ptr<heif_context, HeifContextDeleter> context(heif_context_alloc());
    if (!context)
        return unknown;
    // Reading the file parses its boxes; the coded picture itself is not touched.
    if (heif_context_read_from_file(context.get(), QFile::encodeName(path).constData(), nullptr).code !=
        heif_error_Ok)
        return unknown;
    heif_image_handle *raw = nullptr;
    if (heif_context_get_primary_image_handle(context.get(), &raw).code != heif_error_Ok)
        return unknown;
    std::unique_ptr<heif_image_handle, HeifHandleDeleter> handle(raw);
    const QSize size(heif_image_handle_get_width(handle.get()), heif_image_handle_get_height(handle.get()));
    return size.isValid() ? size : unknown;
}

QSize pixelSize(const QString &path)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    if (extension == u"gif")
        return gifSize(path);
    if (extension == u"heic")
        return heicSize(path);
    if (extension == u"png")
        return qtReaderSize(path, "png");
    if (extension == u"jpg" || extension == u"jpeg")
        return qtReaderSize(path, "jpeg");
    return qtReaderSize(path, {});
}

} // namespace ImageHeaderReader
