#pragma once

#include <QImage>
#include <QRectF>
#include <QString>

#include <optional>

// Barcodes of every format ZXing-C++ reads (QR, Data Matrix, Aztec, PDF417,
// the linear codes...), on screen pictures: also light on dark, also with
// modules of two pixels. Stateless.
namespace CodeReader {

struct Code {
    QString text;
    QRectF box; // where it lies in the picture
};

// The first code that holds text, in reading order (top to bottom, then
// left to right); codes with binary payloads are passed over.
std::optional<Code> first(const QImage &image);

} // namespace CodeReader
