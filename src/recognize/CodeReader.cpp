#include "recognize/CodeReader.h"

#include "recognize/OcrPreparation.h"

// Payloads as UTF-8 text (the library moves to this form).
#define ZX_USE_UTF8 1
#include <ZXing/ReadBarcode.h>

#include <algorithm>
#include <vector>

namespace CodeReader {

namespace {

struct Found {
    QString text;
    QRectF box;
};

std::vector<Found> read(const QImage &gray, int divideBy)
{
    ZXing::DecodeHints hints;
    hints.setTryHarder(true);
    hints.setTryRotate(true);
    hints.setTryDownscale(true);
    hints.setFormats(ZXing::BarcodeFormat::Any);
    const ZXing::ImageView view(gray.constBits(), gray.width(), gray.height(), ZXing::ImageFormat::Lum,
                                int(gray.bytesPerLine()));
    std::vector<Found> found;
    for (const ZXing::Result &result : ZXing::ReadBarcodes(view, hints)) {
        if (!result.isValid() || result.contentType() == ZXing::ContentType::Binary)
            continue;
        const std::string text = result.text();
        if (text.empty())
            continue;
        const ZXing::Position &position = result.position();
        int top = position[0].y, left = position[0].x, bottom = top, right = left;
        for (int i = 1; i < 4; ++i) {
            top = std::min(top, position[i].y);
            left = std::min(left, position[i].x);
            bottom = std::max(bottom, position[i].y);
            right = std::max(right, position[i].x);
        }
        const double d = divideBy;
        found.push_back({QString::fromStdString(text), QRectF(left / d, top / d, (right - left) / d, (bottom - top) / d)});
    }
    return found;
}

QImage doubled(const QImage &gray)
{
    // Nearest neighbour: modules stay square-edged.
    return gray.scaled(gray.width() * 2, gray.height() * 2, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

} // namespace

std::optional<Code> first(const QImage &image)
{
    QImage gray = OcrPreparation::luminance(image);
    if (gray.isNull() || gray.width() < 8 || gray.height() < 8)
        return std::nullopt;
    std::vector<Found> found = read(gray, 1);
    if (found.empty()) {
        // ZXing looks for dark modules on a light ground only.
        QImage inverted = gray;
        inverted.invertPixels();
        found = read(inverted, 1);
        // Modules of two pixels are below what its detectors trust; twice
        // the size they are found.
        if (found.empty() && qint64(gray.width()) * gray.height() <= qint64(1600) * 1600) {
            found = read(doubled(gray), 2);
            if (found.empty())
                found = read(doubled(inverted), 2);
        }
    }
    if (found.empty())
        return std::nullopt;
    std::stable_sort(found.begin(), found.end(), [](const Found &a, const Found &b) {
        return a.box.top() != b.box.top() ? a.box.top() < b.box.top() : a.box.left() < b.box.left();
    });
    return Code{found.front().text, found.front().box};
}

} // namespace CodeReader
