#include "annotation/PixelBlocks.h"

#include <QColorSpace>

#include <algorithm>
#include <cmath>

namespace glimpso {

namespace {

// Block index of each pixel, counted from the first block that reaches into
// the image; block edges lie at centre + k * block. Also the first pixel of
// each block, and one past the last pixel.
void indexBlocks(int pixels, double block, std::vector<int> &ofPixel, std::vector<int> &starts)
{
    ofPixel.resize(pixels);
    starts.clear();
    if (pixels == 0 || !(block > 0)) {
        starts.push_back(0);
        return;
    }
    const double centre = pixels / 2.0;
    const int first = int(std::floor((0.5 - centre) / block));
    for (int i = 0; i < pixels; ++i) {
        ofPixel[i] = int(std::floor((i + 0.5 - centre) / block)) - first;
        if (starts.size() <= size_t(ofPixel[i]))
            starts.push_back(i);
    }
    starts.push_back(pixels);
}

} // namespace

PixelBlocks::PixelBlocks(const QImage &image, double blockSize)
    : m_source(image.convertToFormat(QImage::Format_ARGB32_Premultiplied))
    // A block smaller than a pixel is a pixel: every pixel keeps its colour.
    , m_blockSize(blockSize > 0 ? std::max(blockSize, 1.0) : 0.0)
{
    if (!isValid())
        return;
    indexBlocks(m_source.width(), m_blockSize, m_columnOfPixel, m_columnStarts);
    indexBlocks(m_source.height(), m_blockSize, m_rowOfPixel, m_rowStarts);
    m_averages.resize(size_t(blockCount()));
    m_known.resize(size_t(blockCount()));
}

quint32 PixelBlocks::average(int column, int row)
{
    const size_t columns = m_columnStarts.size() - 1;
    const size_t index = size_t(row) * columns + size_t(column);
    if (m_known[index])
        return m_averages[index];
    const int left = m_columnStarts[column], right = m_columnStarts[column + 1];
    const int top = m_rowStarts[row], bottom = m_rowStarts[row + 1];
    quint64 a = 0, r = 0, g = 0, b = 0;
    for (int y = top; y < bottom; ++y) {
        const auto *line = reinterpret_cast<const quint32 *>(m_source.constScanLine(y));
        for (int x = left; x < right; ++x) {
            const quint32 pixel = line[x];
            a += pixel >> 24;
            r += (pixel >> 16) & 0xff;
            g += (pixel >> 8) & 0xff;
            b += pixel & 0xff;
        }
    }
    const quint64 n = quint64(right - left) * quint64(bottom - top);
    const auto mean = [n](quint64 sum) { return quint32((sum + n / 2) / n); };
    m_averages[index] = mean(a) << 24 | mean(r) << 16 | mean(g) << 8 | mean(b);
    m_known[index] = true;
    return m_averages[index];
}

void PixelBlocks::fillRow(quint32 *out, int left, int right, int row)
{
    for (int x = left; x < right;) {
        const int column = blockColumn(x);
        const int end = std::min(right, m_columnStarts[column + 1]);
        std::fill(out + (x - left), out + (end - left), average(column, row));
        x = end;
    }
}

QImage PixelBlocks::pixellated()
{
    if (!isValid())
        return {};
    QImage result(m_source.size(), QImage::Format_ARGB32_Premultiplied);
    if (result.isNull())
        return {};
    result.setColorSpace(m_source.colorSpace());
    for (int y = 0; y < result.height(); ++y)
        fillRow(reinterpret_cast<quint32 *>(result.scanLine(y)), 0, result.width(), blockRow(y));
    return result;
}

QImage PixelBlocks::mirroredPatch(const QRect &area)
{
    const QRect clipped = area.intersected(m_source.rect());
    if (!isValid() || clipped.isEmpty())
        return {};
    QImage patch(clipped.size(), QImage::Format_ARGB32_Premultiplied);
    if (patch.isNull())
        return {};
    patch.setColorSpace(m_source.colorSpace());
    const int height = m_source.height();
    for (int y = clipped.top(); y <= clipped.bottom(); ++y) {
        auto *out = reinterpret_cast<quint32 *>(patch.scanLine(y - clipped.top()));
        fillRow(out, clipped.left(), clipped.right() + 1, blockRow(height - 1 - y));
    }
    return patch;
}

} // namespace glimpso
