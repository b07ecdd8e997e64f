// Takes pictures of the whole root window the way glimpso does, and exits.
//
//   glimpso-snapshot-bench WIDTH HEIGHT
//       one picture: timed from outside as a whole command, process start
//       included, so that it compares fairly with `xwd -root`;
//   glimpso-snapshot-bench WIDTH HEIGHT --repeat N [--prepared]
//       N pictures in this one process, as the running tray copy takes them
//       one capture after another; prints the first one's milliseconds and
//       the median of the others', each from asking for the picture to having
//       it in memory. With --prepared the display's memory is made ready
//       first, untimed, as the running copy does at start-up.
#include "platform/x11/CaptureService.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRect>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

bool takeOne(CaptureService &service, QSize size)
{
    try {
        const QImage image = service.captureDisplay(0).result();
        if (image.size() != size) {
            std::fprintf(stderr, "snapshot of %dx%d came back %dx%d\n", size.width(), size.height(), image.width(),
                         image.height());
            return false;
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    const QSize size(arguments.value(1, "3840").toInt(), arguments.value(2, "2160").toInt());
    const int repeat = arguments.value(3) == QLatin1String("--repeat") ? arguments.value(4, "1").toInt() : 1;
    CaptureService service({}, [size](std::uint32_t) { return QRect(QPoint(0, 0), size); });
    if (repeat <= 1)
        return takeOne(service, size) ? 0 : 1;
    if (arguments.value(5) == QLatin1String("--prepared"))
        service.prepare({QRect(QPoint(0, 0), size)}).waitForFinished();

    std::vector<double> milliseconds;
    for (int i = 0; i < repeat; ++i) {
        QElapsedTimer timer;
        timer.start();
        if (!takeOne(service, size))
            return 1;
        milliseconds.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    const double first = milliseconds.front();
    std::vector<double> later(milliseconds.begin() + 1, milliseconds.end());
    std::sort(later.begin(), later.end());
    std::printf("%.0f %.0f\n", first, later[(later.size() - 1) / 2]);
    return 0;
}
