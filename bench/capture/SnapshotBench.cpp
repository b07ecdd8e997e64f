// Takes one picture of the whole root window the way glimpso does, and exits:
// timed from outside as a whole command, process start included, so that it
// compares fairly with `xwd -root`.
#include "platform/x11/CaptureService.h"

#include <QCoreApplication>
#include <QRect>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    const int width = arguments.value(1, "3840").toInt();
    const int height = arguments.value(2, "2160").toInt();
    CaptureService service({}, [width, height](std::uint32_t) { return QRect(0, 0, width, height); });
    try {
        const QImage image = service.captureDisplay(0).result();
        if (image.size() != QSize(width, height)) {
            std::fprintf(stderr, "snapshot of %dx%d came back %dx%d\n", width, height, image.width(), image.height());
            return 1;
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
