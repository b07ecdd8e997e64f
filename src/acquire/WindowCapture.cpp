#include "acquire/WindowCapture.h"

#include "acquire/AlphaBlur.h"
#include "appbase/AppError.h"

#include <QLoggingCategory>
#include <QPainter>
#include <QtConcurrent>

#include <cmath>

Q_LOGGING_CATEGORY(lcWindowCapture, "glimpso.WindowCapture")

namespace WindowCapture {

namespace {

struct ShadowLayer {
    double alpha;
    double offsetDownPoints;
    double blurPoints;
};

// A large soft shadow and a small contact shadow, both cast downwards.
constexpr ShadowLayer kShadows[] = {{0.42, 22.0, 56.0}, {0.28, 1.0, 3.0}};

// Source-over of premultiplied black of alpha `a` (0 to 255): colours fade,
// alpha grows.
inline QRgb underBlack(QRgb p, int a)
{
    const int keep = 255 - a;
    return qRgba((qRed(p) * keep + 127) / 255, (qGreen(p) * keep + 127) / 255, (qBlue(p) * keep + 127) / 255,
                 (qAlpha(p) * keep + 127) / 255 + a);
}

// The shadows of an opaque window, whose shape is its rectangle: each
// layer's coverage is the product of a profile across and one down, and
// under the window itself nothing needs drawing, since the window covers it.
void darkenUnderRectangle(QImage &canvas, const QRect &window, double scale)
{
    struct Layer {
        std::vector<float> across, down;
        float alpha;
    };
    std::vector<Layer> layers;
    for (const ShadowLayer &layer : kShadows) {
        const int drop = int(std::lround(layer.offsetDownPoints * scale));
        const double sigma = layer.blurPoints * scale / 2.0;
        layers.push_back({AlphaBlur::profile(canvas.width(), window.left(), window.right() + 1, sigma),
                          AlphaBlur::profile(canvas.height(), window.top() + drop, window.bottom() + 1 + drop, sigma),
                          float(layer.alpha) * 255.0f});
    }
    for (int y = 0; y < canvas.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(canvas.scanLine(y));
        const bool besideWindow = y >= window.top() && y <= window.bottom();
        for (int x = 0; x < canvas.width(); ++x) {
            if (besideWindow && x == window.left()) {
                x = window.right();
                continue;
            }
            QRgb p = row[x];
            for (const Layer &layer : layers) {
                const int a = int(layer.across[std::size_t(x)] * layer.down[std::size_t(y)] * layer.alpha + 0.5f);
                if (a > 0)
                    p = underBlack(p, a);
            }
            row[x] = p;
        }
    }
}

// Lays black of the mask's coverage × `alpha` over the canvas.
void darken(QImage &canvas, const AlphaBlur::Mask &mask, double alpha)
{
    for (int y = 0; y < canvas.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(canvas.scanLine(y));
        const float *m = &mask.values[std::size_t(y) * std::size_t(canvas.width())];
        for (int x = 0; x < canvas.width(); ++x) {
            const int a = int(m[x] * float(alpha) * 255.0f + 0.5f);
            if (a > 0)
                row[x] = underBlack(row[x], a);
        }
    }
}

} // namespace

QString closedText()
{
    return QStringLiteral("That window closed before it could be captured.");
}

QImage frame(const QImage &window, double scale, const Options &options)
{
    const int pad = int(std::lround(std::max(0.0, options.padding) * scale));
    if (pad == 0 && !options.background && !options.shadow)
        return window;
    QImage canvas(window.width() + 2 * pad, window.height() + 2 * pad, QImage::Format_ARGB32_Premultiplied);
    if (canvas.isNull())
        throw AppError::croppingFailed();
    canvas.fill(options.background ? *options.background : QColor(Qt::transparent));
    if (options.shadow && !window.hasAlphaChannel()) {
        darkenUnderRectangle(canvas, QRect(QPoint(pad, pad), window.size()), scale);
    } else if (options.shadow) {
        for (const ShadowLayer &layer : kShadows) {
            const QPoint offset(pad, pad + int(std::lround(layer.offsetDownPoints * scale)));
            const AlphaBlur::Mask mask =
                AlphaBlur::shadowOf(window, offset, canvas.size(), layer.blurPoints * scale / 2.0);
            darken(canvas, mask, layer.alpha);
        }
    }
    QPainter painter(&canvas);
    painter.drawImage(QPoint(pad, pad), window);
    painter.end();
    return canvas;
}

QFuture<RegionCompositor::Composed> capture(WindowGrabbing &grabber, std::uint32_t windowID, const Options &options,
                                            bool justUncovered)
{
    return QtConcurrent::run([&grabber, windowID, options, justUncovered] {
        const WindowGrabbing::Shot shot = grabber.grab(windowID, justUncovered);
        qCInfo(lcWindowCapture, "window %u %dx%d @%f", windowID, shot.image.width(), shot.image.height(), shot.scale);
        return RegionCompositor::Composed{frame(shot.image, shot.scale, options), shot.scale};
    });
}

} // namespace WindowCapture
