// The capture stream alone: frames of an area of $DISPLAY into a sink that
// only counts them, for a number of seconds, as a recording takes them.
//
//   glimpso-stream-bench WxH+X+Y FPS SECONDS [--cursor]
// prints "frames=N ticks=N skipped=N cpu_s=S wall_s=S" (the CPU of this
// process, user and system, from the stream's start to its stop).

#include "platform/x11/X11CaptureStream.h"

#include "app/CaptureVerb.h"

#include <QCoreApplication>

#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

namespace {

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 4) {
        std::fprintf(stderr, "usage: glimpso-stream-bench WxH+X+Y FPS SECONDS [--cursor]\n");
        return 2;
    }
    const std::optional<QRect> area = CaptureVerb::parseGeometry(arguments.at(1));
    const int fps = arguments.at(2).toInt();
    const double seconds = arguments.at(3).toDouble();
    if (!area || fps <= 0 || seconds <= 0) {
        std::fprintf(stderr, "bad arguments\n");
        return 2;
    }
    X11CaptureStream stream({}, X11CaptureStream::Geometry{*area, area->size(), {}}, fps,
                            arguments.contains(QStringLiteral("--cursor")));
    std::atomic<long> frames{0};
    std::atomic<long> touched{0};
    const double cpuBefore = cpuSeconds();
    const auto wallBefore = std::chrono::steady_clock::now();
    stream.start(
        [&](const CaptureStream::Sample &sample) {
            // A sink reads what it keeps: one byte of each changed row stands for that.
            const FramePixels &p = sample.frame.pixels;
            touched += p.line(p.height - 1)[0];
            ++frames;
        },
        [](const QString &reason) { std::fprintf(stderr, "stream stopped: %s\n", qPrintable(reason)); });
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    stream.stop();
    const double cpu = cpuSeconds() - cpuBefore;
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - wallBefore).count();
    const X11CaptureStream::Counts counts = stream.counts();
    std::printf("frames=%ld ticks=%lld skipped=%lld cpu_s=%.3f wall_s=%.3f\n", frames.load(), counts.ticks,
                counts.skipped, cpu, wall);
    return 0;
}
