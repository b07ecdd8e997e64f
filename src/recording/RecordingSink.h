#pragma once

#include "recording/RecordedFrame.h"

#include <QFuture>
#include <QString>

// What a recording's frames go into: a GIF or a video being written while
// the recording runs. One sink serves one session. The calls come in this
// order: `append` and `appendAudio` on the stream's thread while it runs
// (never at the same time), then either `finish` or `cancel` on the main
// thread once the stream has stopped.
class RecordingSink
{
public:
    virtual ~RecordingSink() = default;

    // One frame. Runs on the stream's thread and must not block: the stream
    // waits for it before it takes the next frame.
    virtual void append(const RecordedFrame &frame) = 0;
    // Ends the output: `endTime` is the stop on the same clock as the
    // frames' times. The future gives the finished file's path, or fails
    // with the reason; the work runs off the main thread.
    virtual QFuture<QString> finish(double endTime) = 0;
    // Discards the output.
    virtual void cancel() = 0;
    // Sound, on the stream's thread; `fromMicrophone` tells the two sources apart.
    virtual void appendAudio(const RecordedAudio &audio, bool fromMicrophone) = 0;
};
