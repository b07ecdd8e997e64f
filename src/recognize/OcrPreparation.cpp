#include "recognize/OcrPreparation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace OcrPreparation {

namespace {

// How far a grey must lie from the ground to count as ink.
constexpr int inkContrast = 48;

// A run of ink rows this thin is a rule or a border, not text.
constexpr int thinnestLine = 3;

double cubic(double x)
{
    // Catmull-Rom: a = -0.5.
    x = std::abs(x);
    if (x < 1.0)
        return (1.5 * x - 2.5) * x * x + 1.0;
    if (x < 2.0)
        return ((-0.5 * x + 2.5) * x - 4.0) * x + 2.0;
    return 0.0;
}

// For each output position along one axis: the first source index and the
// weights of the source pixels that make it.
struct Taps {
    std::vector<int> first;
    std::vector<float> weights; // `span` per output position
    int span = 0;
};

Taps tapsFor(int from, int to)
{
    Taps taps;
    const double scale = double(to) / double(from);
    // Shrinking widens the kernel so that every source pixel counts.
    const double support = scale < 1.0 ? 2.0 / scale : 2.0;
    const double stretch = scale < 1.0 ? scale : 1.0;
    taps.span = int(std::ceil(support * 2.0)) + 1;
    taps.first.resize(std::size_t(to));
    taps.weights.resize(std::size_t(to) * std::size_t(taps.span));
    for (int i = 0; i < to; ++i) {
        const double centre = (i + 0.5) / scale - 0.5;
        const int first = int(std::floor(centre - support)) + 1;
        double sum = 0;
        for (int k = 0; k < taps.span; ++k) {
            const double w = cubic((first + k - centre) * stretch);
            taps.weights[std::size_t(i) * std::size_t(taps.span) + std::size_t(k)] = float(w);
            sum += w;
        }
        for (int k = 0; k < taps.span; ++k)
            taps.weights[std::size_t(i) * std::size_t(taps.span) + std::size_t(k)] /= float(sum);
        taps.first[std::size_t(i)] = first;
    }
    return taps;
}

// One line of a run of rows: its x-height band is the rows that the small
// letters fill, which hold far more ink than those of ascenders and
// descenders alone.
TextLines::Line measured(const std::vector<int> &inkPerRow, int top, int bottom)
{
    int most = 0;
    for (int r = top; r <= bottom; ++r)
        most = std::max(most, inkPerRow[std::size_t(r)]);
    TextLines::Line line{top, bottom, 0};
    for (int r = top; r <= bottom; ++r)
        line.xHeight += inkPerRow[std::size_t(r)] * 2 >= most ? 1 : 0;
    return line;
}

// A run of ink rows may hold several lines set close, the descenders of one
// touching the ascenders of the next: it is cut where the ink thins out
// between two dense bands. Runs too thin for text (rules, specks) are left
// out.
QList<TextLines::Line> splitRun(const std::vector<int> &inkPerRow, int top, int bottom)
{
    QList<TextLines::Line> lines;
    if (bottom - top + 1 < thinnestLine)
        return lines;
    int most = 0;
    for (int r = top; r <= bottom; ++r)
        most = std::max(most, inkPerRow[std::size_t(r)]);
    const auto dense = [&](int r) { return inkPerRow[std::size_t(r)] * 2 >= most; };
    const auto thin = [&](int r) { return inkPerRow[std::size_t(r)] * 5 <= most; };
    int start = top;
    int r = top;
    while (r <= bottom) {
        // A stretch of thin rows with a dense band both above and below.
        if (!thin(r)) {
            ++r;
            continue;
        }
        int end = r;
        while (end + 1 <= bottom && thin(end + 1))
            ++end;
        bool denseAbove = false, denseBelow = false;
        for (int a = start; a < r && !denseAbove; ++a)
            denseAbove = dense(a);
        for (int b = end + 1; b <= bottom && !denseBelow; ++b)
            denseBelow = dense(b);
        if (denseAbove && denseBelow) {
            int cut = r;
            for (int c = r; c <= end; ++c)
                if (inkPerRow[std::size_t(c)] < inkPerRow[std::size_t(cut)])
                    cut = c;
            if (cut - start >= thinnestLine)
                lines << measured(inkPerRow, start, cut);
            start = cut + 1;
        }
        r = end + 1;
    }
    if (bottom - start + 1 >= thinnestLine)
        lines << measured(inkPerRow, start, bottom);
    return lines;
}

} // namespace

double TextLines::xHeight() const
{
    if (lines.isEmpty())
        return 0;
    std::vector<int> heights;
    for (const Line &line : lines)
        heights.push_back(line.xHeight);
    std::sort(heights.begin(), heights.end());
    return heights[heights.size() / 2];
}

QImage luminance(const QImage &image)
{
    if (image.isNull())
        return {};
    if (image.format() == QImage::Format_Grayscale8)
        return image;
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    QImage gray(argb.size(), QImage::Format_Grayscale8);
    for (int y = 0; y < argb.height(); ++y) {
        const auto *in = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        uchar *out = gray.scanLine(y);
        for (int x = 0; x < argb.width(); ++x) {
            const QRgb p = in[x];
            const int a = qAlpha(p);
            // Transparent parts read as white paper.
            const int luma = (qRed(p) * 299 + qGreen(p) * 587 + qBlue(p) * 114 + 500) / 1000;
            out[x] = uchar((luma * a + 255 * (255 - a) + 127) / 255);
        }
    }
    return gray;
}

TextLines findTextLines(const QImage &gray)
{
    TextLines found;
    if (gray.isNull())
        return found;
    std::array<qint64, 256> histogram{};
    for (int y = 0; y < gray.height(); ++y) {
        const uchar *row = gray.constScanLine(y);
        for (int x = 0; x < gray.width(); ++x)
            ++histogram[row[x]];
    }
    // The ground: the fullest bin of a slightly smoothed histogram, so that a
    // gradient or dithered ground still has one peak.
    qint64 best = -1;
    for (int v = 0; v < 256; ++v) {
        qint64 around = 0;
        for (int d = -2; d <= 2; ++d)
            if (v + d >= 0 && v + d < 256)
                around += histogram[std::size_t(v + d)];
        if (around > best) {
            best = around;
            found.background = v;
        }
    }
    // Then the fullest single grey near that peak.
    const int peak = found.background;
    for (int v = std::max(0, peak - 2); v <= std::min(255, peak + 2); ++v)
        if (histogram[std::size_t(v)] > histogram[std::size_t(found.background)])
            found.background = v;
    qint64 lighter = 0, darker = 0;
    for (int v = 0; v < 256; ++v) {
        if (v >= found.background + inkContrast)
            lighter += histogram[std::size_t(v)];
        else if (v <= found.background - inkContrast)
            darker += histogram[std::size_t(v)];
    }
    found.lightOnDark = lighter > darker;

    const auto isInk = [&found](uchar v) {
        return found.lightOnDark ? v >= found.background + inkContrast : v <= found.background - inkContrast;
    };
    std::vector<int> inkPerRow(std::size_t(gray.height()), 0);
    for (int y = 0; y < gray.height(); ++y) {
        const uchar *row = gray.constScanLine(y);
        int count = 0;
        for (int x = 0; x < gray.width(); ++x)
            count += isInk(row[x]) ? 1 : 0;
        inkPerRow[std::size_t(y)] = count;
    }
    int y = 0;
    while (y < gray.height()) {
        if (inkPerRow[std::size_t(y)] == 0) {
            ++y;
            continue;
        }
        const int top = y;
        while (y < gray.height() && inkPerRow[std::size_t(y)] > 0)
            ++y;
        for (const TextLines::Line &line : splitRun(inkPerRow, top, y - 1))
            found.lines << line;
    }
    return found;
}

int eraseSolidBlocks(QImage &gray, const TextLines &lines)
{
    const auto isInk = [&lines](uchar v) {
        return lines.lightOnDark ? v >= lines.background + inkContrast : v <= lines.background - inkContrast;
    };
    int erased = 0;
    for (const TextLines::Line &line : lines.lines) {
        const int height = line.bottom - line.top + 1;
        // Glyph groups: columns with ink, between columns without.
        int x = 0;
        while (x < gray.width()) {
            const auto columnInk = [&](int column) {
                int count = 0;
                for (int y = line.top; y <= line.bottom; ++y)
                    count += isInk(gray.constScanLine(y)[column]) ? 1 : 0;
                return count;
            };
            if (columnInk(x) == 0) {
                ++x;
                continue;
            }
            const int left = x;
            int ink = 0, top = line.bottom, bottom = line.top;
            for (; x < gray.width(); ++x) {
                const int count = columnInk(x);
                if (count == 0)
                    break;
                ink += count;
                for (int y = line.top; y <= line.bottom; ++y)
                    if (isInk(gray.constScanLine(y)[x])) {
                        top = std::min(top, y);
                        bottom = std::max(bottom, y);
                    }
            }
            const int width = x - left, boxHeight = bottom - top + 1;
            const bool solid = ink >= 0.9 * width * boxHeight;
            // As tall as the line, and wide as a character cell: not a rule,
            // not a stroke of a letter such as l or I.
            if (solid && boxHeight * 10 >= height * 7 && width * 5 >= boxHeight * 2) {
                for (int y = std::max(0, line.top - 1); y <= std::min(gray.height() - 1, line.bottom + 1); ++y)
                    std::fill_n(gray.scanLine(y) + std::max(0, left - 1), std::min(gray.width(), x + 1) - std::max(0, left - 1),
                                uchar(lines.background));
                ++erased;
            }
        }
    }
    return erased;
}

QImage resample(const QImage &gray, int width, int height)
{
    if (gray.isNull() || width <= 0 || height <= 0)
        return {};
    const Taps across = tapsFor(gray.width(), width);
    const Taps down = tapsFor(gray.height(), height);
    // Across first, into floats, then down.
    std::vector<float> middle(std::size_t(width) * std::size_t(gray.height()));
    const int lastX = gray.width() - 1;
    for (int y = 0; y < gray.height(); ++y) {
        const uchar *row = gray.constScanLine(y);
        float *out = &middle[std::size_t(y) * std::size_t(width)];
        for (int x = 0; x < width; ++x) {
            const float *w = &across.weights[std::size_t(x) * std::size_t(across.span)];
            const int first = across.first[std::size_t(x)];
            float sum = 0;
            for (int k = 0; k < across.span; ++k)
                sum += w[k] * row[std::clamp(first + k, 0, lastX)];
            out[x] = sum;
        }
    }
    QImage result(width, height, QImage::Format_Grayscale8);
    const int lastY = gray.height() - 1;
    std::vector<float> line(static_cast<std::size_t>(width));
    for (int y = 0; y < height; ++y) {
        const float *w = &down.weights[std::size_t(y) * std::size_t(down.span)];
        const int first = down.first[std::size_t(y)];
        std::fill(line.begin(), line.end(), 0.0f);
        for (int k = 0; k < down.span; ++k) {
            const float *source = &middle[std::size_t(std::clamp(first + k, 0, lastY)) * std::size_t(width)];
            const float weight = w[k];
            for (int x = 0; x < width; ++x)
                line[std::size_t(x)] += weight * source[x];
        }
        uchar *out = result.scanLine(y);
        for (int x = 0; x < width; ++x)
            out[x] = uchar(std::clamp(int(line[std::size_t(x)] + 0.5f), 0, 255));
    }
    return result;
}

QRectF Prepared::toSource(const QRectF &rect) const
{
    return QRectF((rect.x() - margin) / scale, (rect.y() - margin) / scale, rect.width() / scale,
                  rect.height() / scale);
}

Prepared prepare(const QImage &image, const Options &options)
{
    Prepared prepared;
    QImage gray = luminance(image);
    if (gray.isNull())
        return prepared;
    TextLines lines = findTextLines(gray);
    if (eraseSolidBlocks(gray, lines) > 0)
        lines = findTextLines(gray);
    prepared.inverted = lines.lightOnDark;
    prepared.xHeight = lines.xHeight();
    int background = lines.background;
    if (prepared.inverted) {
        gray.invertPixels();
        background = 255 - background;
    }
    // Small text is enlarged to the size the engine knows best; large text
    // is left as it is, since shrinking loses more than it saves.
    double scale = 1.0;
    if (prepared.xHeight > 0)
        scale = std::clamp(options.targetXHeight / prepared.xHeight, 1.0, 8.0);
    const double pixels = double(gray.width()) * double(gray.height()) * scale * scale;
    if (pixels > double(options.maxPixels))
        scale = std::max(1.0, std::sqrt(double(options.maxPixels) / (double(gray.width()) * double(gray.height()))));
    prepared.scale = scale;
    const int width = std::max(1, int(std::lround(gray.width() * scale)));
    const int height = std::max(1, int(std::lround(gray.height() * scale)));
    const QImage scaled = scale == 1.0 ? gray : resample(gray, width, height);

    // A margin of ground: text that touches the edge is read badly or not
    // at all.
    const int margin = std::max(10, int(std::lround(options.targetXHeight)));
    prepared.margin = margin;
    prepared.gray = QImage(width + 2 * margin, height + 2 * margin, QImage::Format_Grayscale8);
    prepared.gray.fill(uint(background));
    for (int y = 0; y < height; ++y)
        std::copy_n(scaled.constScanLine(y), width, prepared.gray.scanLine(y + margin) + margin);

    // One run of ink rows, not much taller than its letters, is one line.
    prepared.layout = lines.lines.size() == 1 ? Layout::singleLine : Layout::block;
    return prepared;
}

} // namespace OcrPreparation
