#pragma once

#include <QImage>

// How much ink a picture holds: the sum of its alpha over all pixels.
inline qint64 inkOf(const QImage &image)
{
    qint64 sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += qAlpha(image.pixel(x, y));
    return sum;
}
