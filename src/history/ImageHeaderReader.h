#pragma once

#include "appbase/CaptureKind.h"

#include <QSize>
#include <QString>

// The pixel size of a capture file, read from its header without decoding the
// picture. 0 x 0 when the file can't be read or isn't a picture:
// the caller keeps the item either way.
namespace ImageHeaderReader {

QSize pixelSize(const QString &path);

// Each reader on its own, for the formats that need more than Qt's readers.
QSize gifSize(const QString &path);  // the logical screen of the GIF header
QSize heicSize(const QString &path); // the primary image, through libheif

} // namespace ImageHeaderReader
