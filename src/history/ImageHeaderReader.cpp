#include "history/ImageHeaderReader.h"

#include "history/HeaderFile.h"
#include "output/HeifLibrary.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <memory>

namespace ImageHeaderReader {

namespace {

const QSize unknown(0, 0);

struct HeifContextDeleter {
    const HeifLibrary *heif;
    void operator()(heif_context *context) const { heif->contextFree(context); }
};
struct HeifHandleDeleter {
    const HeifLibrary *heif;
    void operator()(heif_image_handle *handle) const { heif->imageHandleRelease(handle); }
};

QSize qtReaderSize(const QString &path, const QByteArray &format)
{
    HeaderFile header(path);
    QFile file;
    if (!header.isOpen() || !file.open(header.descriptor(), QIODevice::ReadOnly, QFileDevice::DontCloseHandle))
        return unknown;
    // The size option of Qt's PNG and JPEG readers stops before the picture
    // data. Naming the format spares asking every reader whether it knows the file.
    QImageReader reader(&file, format);
    const QSize size = reader.size();
    return size.isValid() ? size : unknown;
}

// libheif reads through these, so that it too reads only what it asks for.
heif_reader headerFileReader()
{
    heif_reader reader{};
    reader.reader_api_version = 1;
    reader.get_position = [](void *file) -> int64_t { return static_cast<HeaderFile *>(file)->position(); };
    reader.read = [](void *data, size_t size, void *file) -> int {
        return static_cast<HeaderFile *>(file)->read(data, qint64(size)) == qint64(size) ? 0 : -1;
    };
    reader.seek = [](int64_t position, void *file) -> int {
        return static_cast<HeaderFile *>(file)->seek(position) ? 0 : -1;
    };
    reader.wait_for_file_size = [](int64_t size, void *file) -> heif_reader_grow_status {
        return size <= static_cast<HeaderFile *>(file)->size() ? heif_reader_grow_status_size_reached
                                                                : heif_reader_grow_status_size_beyond_eof;
    };
    return reader;
}

} // namespace

QSize gifSize(const QString &path)
{
    HeaderFile file(path);
    // "GIF87a" or "GIF89a", then the logical screen width and height, little-endian.
    QByteArray header(10, '\0');
    header.truncate(qMax<qint64>(0, file.readAt(0, header.data(), header.size())));
    if (header.size() < 10 || !(header.startsWith("GIF87a") || header.startsWith("GIF89a")))
        return unknown;
    const auto byte = [&](int i) { return static_cast<unsigned char>(header[i]); };
    return {byte(6) | byte(7) << 8, byte(8) | byte(9) << 8};
}

QSize heicSize(const QString &path)
{
    HeaderFile file(path);
    if (!file.isOpen())
        return unknown;
    const HeifLibrary *heif = HeifLibrary::loaded();
    if (!heif)
        return unknown;
    std::unique_ptr<heif_context, HeifContextDeleter> context(heif->contextAlloc(), HeifContextDeleter{heif});
    if (!context)
        return unknown;
    // Reading the file parses its boxes; the coded picture itself is not touched.
    static const heif_reader reader = headerFileReader();
    if (heif->contextReadFromReader(context.get(), &reader, &file, nullptr).code != heif_error_Ok)
        return unknown;
    heif_image_handle *raw = nullptr;
    if (heif->contextGetPrimaryImageHandle(context.get(), &raw).code != heif_error_Ok)
        return unknown;
    std::unique_ptr<heif_image_handle, HeifHandleDeleter> handle(raw, HeifHandleDeleter{heif});
    const QSize size(heif->imageHandleGetWidth(handle.get()), heif->imageHandleGetHeight(handle.get()));
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
