#pragma once

#include <QList>
#include <QRect>
#include <QRectF>

// Where the displays lie in the X server's pixels and in Qt's desktop space,
// taken on the main thread and then usable anywhere: window geometry comes
// from the server in its pixels, and leaves in global points.
class X11ScreenGeometry
{
public:
    struct Screen {
        QRect qtGeometry;
        double scale = 1.0;
    };

    X11ScreenGeometry() = default;
    X11ScreenGeometry(QList<Screen> screens, QRect primaryGeometry);
    // The desktop as Qt has it now. Main thread.
    static X11ScreenGeometry current();

    // A rectangle of root-window pixels in global points, y up, by the
    // display that holds its centre (the primary one when none does).
    QRectF toGlobal(const QRect &rootPixels) const;
    // Pixels per point where the rectangle lies.
    double scaleAt(const QRect &rootPixels) const;

private:
    const Screen *screenAt(const QRect &rootPixels) const;

    QList<Screen> m_screens;
    QRect m_primary;
};
