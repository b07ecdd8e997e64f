#pragma once

#include "videowriting/MediaHandles.h"
#include "videowriting/PictureConverter.h"
#include "videowriting/VideoWriter.h"

#include <functional>
#include <string>

namespace videowriting {

// The video track's encoder: a hardware encoder through VAAPI when a render
// node offers one for the codec, else libx264 or libx265. It owns the picture
// the frames are converted into; `encode` hands that picture to the encoder
// with a time, as often as asked, so an unchanged frame costs no conversion.
class VideoEncoder {
public:
    using PacketSink = std::function<void(AVPacket *)>;

    // Time base of the pictures: 1/90000 s.
    static constexpr AVRational timeBase{1, 90000};

    // Throws WriterError::cannotAddInput("video") when no encoder opens.
    VideoEncoder(const VideoWriter::Options &options, int width, int height);

    const AVCodecContext *context() const { return context_.get(); }
    const std::string &name() const { return name_; }
    bool hardware() const { return bool(device_); }

    // The picture to convert into; writable.
    YUVPlanes picture();
    // Encodes the picture as it stands at `pts`; packets go to `sink`.
    void encode(std::int64_t pts, const PacketSink &sink);
    // Drains the encoder.
    void flush(const PacketSink &sink);

    // The software encoder's name for a codec ("libx264", "libx265").
    static const char *softwareEncoder(VideoWriter::Codec codec);

private:
    bool openHardware(const VideoWriter::Options &options, int width, int height);
    bool openSoftware(const VideoWriter::Options &options, int width, int height);
    void configure(AVCodecContext *context, const VideoWriter::Options &options, int width, int height) const;
    void receive(const PacketSink &sink);

    CodecContextPtr context_;
    BufferPtr device_;
    FramePtr picture_;
    FramePtr upload_;
    PacketPtr packet_;
    std::string name_;
};

} // namespace videowriting
