#include "app/RecordingBackend.h"

#include "platform/dbus/LogindWatch.h"
#include "platform/x11/X11CaptureStream.h"
#include "platform/x11/X11Compositing.h"
#include "platform/x11/X11DisplayWatch.h"
#include "recording/ThermalWatch.h"

RecordingBackend RecordingBackend::load()
{
    RecordingBackend backend;
    backend.name = QStringLiteral("X11");
    backend.makeStream = X11CaptureStream::factory();
    backend.translucentWindows = [] { return X11Compositing::managerRunning(); };
    backend.makeWatches = [] {
        std::vector<std::unique_ptr<InterruptionWatch>> watches;
        watches.push_back(std::make_unique<LogindWatch>());
        watches.push_back(std::make_unique<X11DisplayWatch>());
        watches.push_back(std::make_unique<ThermalWatch>());
        return watches;
    };
    return backend;
}
