#include "output/ImageEncoder.h"

#include "appbase/AppError.h"
#include "output/HeifLibrary.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>
#include <QPainter>

#include <cstring>
#include <memory>

namespace ImageEncoder {

QString fileExtension(SaveFormat format)
{
    switch (format) {
    case SaveFormat::png:
        return QStringLiteral("png");
    case SaveFormat::jpeg:
        return QStringLiteral("jpeg");
    case SaveFormat::heic:
        return QStringLiteral("heic");
    }
    return QStringLiteral("png");
}

namespace {

QByteArray withQt(const QImage &image, const char *format, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    if (!writer.write(image))
        throw AppError::fileIOFailed(QStringLiteral("image finalize failed: ") + writer.errorString());
    return bytes;
}

heif_error appendBytes(heif_context *, const void *data, size_t size, void *userdata)
{
    static_cast<QByteArray *>(userdata)->append(static_cast<const char *>(data), qsizetype(size));
    return heif_error{heif_error_Ok, heif_suberror_Unspecified, "ok"};
}

[[noreturn]] void heifFailed(const char *step, const heif_error &error)
{
    throw AppError::fileIOFailed(QStringLiteral("%1: %2").arg(QLatin1String(step), QString::fromUtf8(error.message)));
}

QByteArray heic(const QImage &source)
{
    const HeifLibrary *heif = HeifLibrary::loaded();
    if (!heif)
        throw AppError::fileIOFailed(QStringLiteral("HEIC encoder create failed: libheif could not be loaded"));
    const bool alpha = source.hasAlphaChannel();
    const QImage image = source.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    std::unique_ptr<heif_context, decltype(heif->contextFree)> context(heif->contextAlloc(), heif->contextFree);
    if (!context)
        throw AppError::fileIOFailed(QStringLiteral("HEIC encoder create failed"));
    heif_encoder *rawEncoder = nullptr;
    heif_error error = heif->contextGetEncoderForFormat(context.get(), heif_compression_HEVC, &rawEncoder);
    if (error.code != heif_error_Ok)
        heifFailed("HEIC encoder create failed", error);
    std::unique_ptr<heif_encoder, decltype(heif->encoderRelease)> encoder(rawEncoder, heif->encoderRelease);
    heif->encoderSetLossyQuality(encoder.get(), lossyQuality);

    heif_image *rawImage = nullptr;
    error = heif->imageCreate(image.width(), image.height(), heif_colorspace_RGB,
                              alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, &rawImage);
    if (error.code != heif_error_Ok)
        heifFailed("HEIC image create failed", error);
    std::unique_ptr<heif_image, decltype(heif->imageRelease)> picture(rawImage, heif->imageRelease);
    error = heif->imageAddPlane(picture.get(), heif_channel_interleaved, image.width(), image.height(), 8);
    if (error.code != heif_error_Ok)
        heifFailed("HEIC image create failed", error);
    int stride = 0;
    uint8_t *plane = heif->imageGetPlane(picture.get(), heif_channel_interleaved, &stride);
    const std::size_t rowBytes = std::size_t(image.width()) * (alpha ? 4 : 3);
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(plane + std::size_t(y) * std::size_t(stride), image.constScanLine(y), rowBytes);

    error = heif->contextEncodeImage(context.get(), picture.get(), encoder.get(), nullptr, nullptr);
    if (error.code != heif_error_Ok)
        heifFailed("image finalize failed", error);
    QByteArray bytes;
    heif_writer writer{1, &appendBytes};
    error = heif->contextWrite(context.get(), &writer, &bytes);
    if (error.code != heif_error_Ok)
        heifFailed("image finalize failed", error);
    return bytes;
}

} // namespace

QByteArray png(const QImage &image)
{
    // Qt's PNG writer maps quality q to zlib level (100 − q) × 9 / 91.
    return withQt(image, "png", 100 - (pngZlibLevel * 91 + 8) / 9);
}

QByteArray encode(const QImage &image, SaveFormat format)
{
    if (image.isNull())
        throw AppError::fileIOFailed(QStringLiteral("image finalize failed: the picture is empty"));
    switch (format) {
    case SaveFormat::png:
        return png(image);
    case SaveFormat::jpeg:
        // JPEG has no alpha: transparent parts (a gap between displays) go
        // white rather than black.
        if (image.hasAlphaChannel()) {
            QImage flat(image.size(), QImage::Format_RGB32);
            flat.fill(Qt::white);
            flat.setColorSpace(image.colorSpace());
            {
                QPainter painter(&flat);
                painter.drawImage(0, 0, image);
            }
            return withQt(flat, "jpeg", lossyQuality);
        }
        return withQt(image, "jpeg", lossyQuality);
    case SaveFormat::heic:
        return heic(image);
    }
    return png(image);
}

} // namespace ImageEncoder
