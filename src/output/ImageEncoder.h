#pragma once

#include "settings/SettingsEnums.h"

#include <QByteArray>
#include <QImage>
#include <QString>

// Turns a finished picture into the bytes of a capture file. Stateless; runs
// on any thread.
namespace ImageEncoder {

// Quality of the lossy formats, out of 100.
inline constexpr int lossyQuality = 92;
// zlib level 1: a 4K screenshot encodes several times faster than at the
// default level 6, for files a few percent larger.
inline constexpr int pngZlibLevel = 1;

QString fileExtension(SaveFormat format);

// The encoded picture; throws AppError fileIOFailed when the encoder cannot
// be made or finished.
QByteArray encode(const QImage &image, SaveFormat format);
QByteArray png(const QImage &image);

} // namespace ImageEncoder
