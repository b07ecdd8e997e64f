#pragma once

#include <QImage>
#include <QRect>

#include <vector>

namespace glimpso {

// A grid of square blocks anchored at the centre of an image, each block the
// average colour of the pixels whose centres fall in it. Blocks are averaged
// on first use and kept, so a flatten that shows only a few mosaics reads
// only the pixels under them, and never averages a block twice.
class PixelBlocks {
public:
    // `blockSize` in pixels; any positive size, fractions allowed, below one
    // pixel taken as one.
    PixelBlocks(const QImage &image, double blockSize);

    bool isValid() const { return !m_source.isNull() && m_blockSize > 0; }
    QSize imageSize() const { return m_source.size(); }
    double blockSize() const { return m_blockSize; }
    int blockCount() const { return int(m_columnStarts.size() - 1) * int(m_rowStarts.size() - 1); }

    // The whole image pixellated.
    QImage pixellated();

    // The pixellated picture for the pixels of `area` turned upside down: the
    // patch's pixel (x, y) shows the pixellated pixel (x, height - 1 - y) of
    // the image, x and y counted in image pixels.
    QImage mirroredPatch(const QRect &area);

private:
    int blockColumn(int x) const { return m_columnOfPixel[x]; }
    int blockRow(int y) const { return m_rowOfPixel[y]; }
    quint32 average(int column, int row);
    // One output row: the averages of `row` laid over pixels [left, right).
    void fillRow(quint32 *out, int left, int right, int row);

    QImage m_source;
    double m_blockSize;
    std::vector<int> m_columnOfPixel, m_rowOfPixel;
    std::vector<int> m_columnStarts, m_rowStarts; // first pixel of each block, plus the end
    std::vector<quint32> m_averages;
    std::vector<bool> m_known;
};

} // namespace glimpso
