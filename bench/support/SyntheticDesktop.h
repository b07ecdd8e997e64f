#pragma once

#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QRandomGenerator>

// Something like a desktop, the same in every run: a gradient with a dozen
// light windows holding lines of dark "text".
inline QImage syntheticDesktop(QSize size, QImage::Format format)
{
    QImage image(size, format);
    QPainter painter(&image);
    QLinearGradient background(0, 0, size.width(), size.height());
    background.setColorAt(0, QColor(40, 60, 90));
    background.setColorAt(1, QColor(200, 120, 60));
    painter.fillRect(image.rect(), background);
    QRandomGenerator random(7);
    for (int i = 0; i < 12; ++i) {
        const QRect window(random.bounded(3000), random.bounded(1600), 400 + random.bounded(800),
                           300 + random.bounded(500));
        painter.fillRect(window, QColor(245, 245, 245));
        for (int y = window.top() + 20; y < window.bottom() - 10; y += 28)
            painter.fillRect(QRect(window.left() + 20, y, random.bounded(window.width() - 40), 12), QColor(40, 40, 40));
    }
    return image;
}
