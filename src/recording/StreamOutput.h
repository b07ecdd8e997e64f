#pragma once

#include "recording/CaptureStream.h"

#include <functional>

class RecordingSink;

// Receives the stream's callbacks on the stream's thread and hands complete
// frames to the sink; idle, blank and other frames stop here.
class StreamOutput
{
public:
    explicit StreamOutput(RecordingSink &sink);

    void sample(const CaptureStream::Sample &sample);
    void audio(const RecordedAudio &audio, bool fromMicrophone);
    // The stream stopped by itself.
    void stopped(const QString &reason);

    // Called on the stream's thread; absent means nobody listens.
    std::function<void(const QString &reason)> onError;

    // Frames handed to the sink so far.
    qint64 framesDelivered() const { return m_delivered; }

private:
    RecordingSink &m_sink;
    qint64 m_delivered = 0;
};
