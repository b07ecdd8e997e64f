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

// Lays black of the mask's coverage × `alpha` over the canvas.
void darken(QImage &canvas, const AlphaBlur::Mask &mask, double alpha)
{
    for (int y = 0; y < canvas.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(canvas.scanLine(y));
        const float *m = &mask.values[std::size_t(y) * std::size_t(canvas.width())];
        for (int x = 0; x < canvas.width(); ++x) {
            const int a = int(m[x] * float(alpha) * 255.0f + 0.5f);
            if (a <= 0)
                continue;
            const QRgb p = row[x];
            const int keep = 255 - a;
            // Source-over of premultiplied black: colours fade, alpha grows.
            row[x] = qRgba((qRed(p) * keep + 127) / 255, (qGreen(p) * keep + 127) / 255,
                           (qBlue(p) * keep + 127) / 255, (qAlpha(p) * keep + 127) / 255 + a);
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
    if (options.shadow) {
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
