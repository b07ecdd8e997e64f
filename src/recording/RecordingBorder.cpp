#include "recording/RecordingBorder.h"

#include "recording/FloatingPanel.h"

#include <QPainter>
#include <QRegion>

RecordingBorder::RecordingBorder(bool translucent, QWidget *parent) : QWidget(parent), m_translucent(translucent)
{
    FloatingPanel::prepare(this, QStringLiteral("glimpso recording border"), {true, translucent});
}

QColor RecordingBorder::colour()
{
    QColor red(255, 59, 48);
    red.setAlphaF(0.9);
    return red;
}

void RecordingBorder::showAround(const QRectF &area)
{
    const QRectF grown = area.adjusted(-margin, -margin, margin, margin);
    setGeometry(FloatingPanel::qtGeometry(grown));
    QRegion shape;
    for (const QRect &dash : dashes(size()))
        shape += dash;
    setMask(shape);
    show();
}

QList<QRect> RecordingBorder::dashes(QSize size)
{
    // The line's outer edge runs 1 point inside the window, 2 points thick:
    // the path is the rectangle inset by 1.5, as the line's centre.
    constexpr int inset = 1;
    constexpr int thickness = 2;
    constexpr int on = 6;
    constexpr int period = 10;
    const int left = inset;
    const int top = inset;
    const int right = size.width() - inset - thickness;   // the x of the right line
    const int bottom = size.height() - inset - thickness; // the y of the bottom line
    QList<QRect> result;
    if (right <= left || bottom <= top)
        return result;
    // Walk the centre line clockwise, one point at a time; each point of the
    // walk that falls in an "on" stretch is covered by a square of the line.
    const int width = right - left;
    const int height = bottom - top;
    const int perimeter = 2 * (width + height);
    auto square = [&](int distance) -> QPoint {
        if (distance < width)
            return {left + distance, top};
        distance -= width;
        if (distance < height)
            return {right, top + distance};
        distance -= height;
        if (distance < width)
            return {right - distance, bottom};
        distance -= width;
        return {left, bottom - distance};
    };
    int start = -1;
    auto flush = [&](int from, int to) {
        // The squares from `from` to `to`, merged per side into rectangles.
        QRect run;
        for (int d = from; d <= to; ++d) {
            const QRect piece(square(d), QSize(thickness, thickness));
            if (run.isNull()) {
                run = piece;
            } else if (piece.top() == run.top() && piece.height() == run.height() &&
                       (piece.left() == run.right() + 1 || piece.right() == run.left() - 1 ||
                        piece.intersects(run))) {
                run = run.united(piece);
            } else if (piece.left() == run.left() && piece.width() == run.width()) {
                run = run.united(piece);
            } else {
                result << run;
                run = piece;
            }
        }
        if (!run.isNull())
            result << run;
    };
    for (int d = 0; d < perimeter; ++d) {
        const bool lit = d % period < on;
        if (lit && start < 0)
            start = d;
        if (!lit && start >= 0) {
            flush(start, d - 1);
            start = -1;
        }
    }
    if (start >= 0)
        flush(start, perimeter - 1);
    return result;
}

void RecordingBorder::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_translucent) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    // The window is cut to the dashes: fill them.
    const QColor red = colour();
    for (const QRect &dash : dashes(size()))
        painter.fillRect(dash, m_translucent ? red : QColor(red.red(), red.green(), red.blue()));
}
