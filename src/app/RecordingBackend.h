#pragma once

#include "recording/CaptureStream.h"
#include "recording/InterruptionWatch.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

// What recording needs from the desktop it runs on: the capture stream,
// whether windows can be see-through, and the watches of the events that
// must end a recording. The build picks the implementation (X11 now); a
// build without one records nothing and says why.
struct RecordingBackend {
    QString name;
    CaptureStreamFactory makeStream;
    std::function<bool()> translucentWindows;
    std::function<std::vector<std::unique_ptr<InterruptionWatch>>()> makeWatches;

    static RecordingBackend load();
};
