#include "videowriting/VideoWriter.h"

#include <algorithm>

namespace videowriting {

VideoWriter::~VideoWriter() = default;

VideoWriter::WriterError::WriterError(Case which, const std::string &message)
    : std::runtime_error(message), case_(which)
{
}

VideoWriter::WriterError::~WriterError() = default;

VideoWriter::WriterError VideoWriter::WriterError::cannotAddInput(const std::string &track)
{
    return WriterError(Case::cannotAddInput, "The video writer couldn't add its " + track + " track.");
}

VideoWriter::WriterError VideoWriter::WriterError::cannotStart()
{
    return WriterError(Case::cannotStart, "The video writer couldn't start.");
}

VideoWriter::WriterError VideoWriter::WriterError::cannotFinish()
{
    return WriterError(Case::cannotFinish, "The video couldn't be finished.");
}

VideoWriter::WriterError VideoWriter::WriterError::noFrames()
{
    return WriterError(Case::noFrames, "Nothing was recorded.");
}

std::int64_t VideoWriter::bitRate(const Options &options)
{
    const double factor = options.codec == Codec::hevc ? 0.06 : 0.1;
    const double rate = double(options.width) * double(options.height) * double(options.framesPerSecond) * factor;
    if (rate <= 4'000'000)
        return 4'000'000;
    return std::int64_t(std::min(rate, 40'000'000.0));
}

int VideoWriter::encodedSide(int side)
{
    return std::max(2, side & ~1);
}

std::string_view VideoWriter::codecName(Codec codec)
{
    return codec == Codec::hevc ? "hevc" : "h264";
}

std::optional<VideoWriter::Codec> VideoWriter::codecFromName(std::string_view name)
{
    if (name == "hevc")
        return Codec::hevc;
    if (name == "h264")
        return Codec::h264;
    return std::nullopt;
}

MediaError::MediaError(const std::string &what, int code) : std::runtime_error(what), code_(code) {}

MediaError::~MediaError() = default;

} // namespace videowriting
