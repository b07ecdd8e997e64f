#include "recording/StreamOutput.h"

#include "recording/RecordingSink.h"

StreamOutput::StreamOutput(RecordingSink &sink) : m_sink(sink) {}

void StreamOutput::sample(const CaptureStream::Sample &sample)
{
    if (sample.status != CaptureStream::FrameStatus::complete || sample.frame.pixels.isNull())
        return;
    ++m_delivered;
    m_sink.append(sample.frame);
}

void StreamOutput::audio(const RecordedAudio &audio, bool fromMicrophone)
{
    if (audio.samples == nullptr || audio.frameCount <= 0)
        return;
    m_sink.appendAudio(audio, fromMicrophone);
}

void StreamOutput::stopped(const QString &reason)
{
    if (onError)
        onError(reason);
}
