#pragma once

#include "videowriting/MediaHandles.h"
#include "videowriting/VideoWriter.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <span>

namespace videowriting {

class FragmentedMP4;
class SoundEncoder;
class VideoEncoder;

// Everything between a queued frame and the file, used by the writer's one
// thread: the picture the frames are converted into, the video and sound
// encoders, and the fragmented file with its cuts.
//
// Times: 0 is the first frame's time, for pictures and sound alike.
class EncodingPipeline {
public:
    enum class Track { system, microphone };

    // Opens the encoders and writes the file's header. A sound track whose
    // encoder doesn't open is left out (logged).
    EncodingPipeline(const std::filesystem::path &url, const VideoWriter::Options &options, double fragmentSeconds);
    ~EncodingPipeline();

    int width() const { return width_; }
    int height() const { return height_; }
    bool hasTrack(Track track) const;
    const std::string &encoderName() const;

    // Pixels for one area of the picture: `pixels` is its top-left, rows
    // `bytesPerLine` apart.
    struct Patch {
        PixelRect rect;
        const std::uint8_t *pixels = nullptr;
        int bytesPerLine = 0;
    };

    // A frame: the patches are converted into the picture, then the picture
    // is encoded at `seconds`. No patches: the picture as it stands.
    void picture(std::span<const Patch> patches, double seconds);
    // The stream hands over only frames that changed; the picture that
    // stands is encoded again at every frame time the stream left out, up to
    // `seconds`, so the file has its full frame rate (an unchanged picture
    // costs the encoder next to nothing). Nothing before the first frame.
    // `most` limits the repeats of one call: when the writer is behind, the
    // frames it dropped are not made up for with still more work.
    void repeatUntil(double seconds, int most = -1);
    void sound(const SoundChunk &chunk, Track track);
    // The last frame lasts until `endTime`; everything is written and closed.
    void end(double endTime);
    // Closes the file as it stands.
    void abandon();

private:
    std::int64_t videoTicks(double seconds) const;
    void writeVideo(AVPacket *packet);
    void writeHeldVideo(std::int64_t until);
    void writeSound(AVPacket *packet, Track track);

    std::filesystem::path url_;
    double fragmentSeconds_;
    double interval_;
    int width_;
    int height_;
    std::unique_ptr<FragmentedMP4> file_;
    std::unique_ptr<VideoEncoder> video_;
    std::unique_ptr<SoundEncoder> sound_[2];
    int videoTrack_ = -1;
    int soundTrack_[2] = {-1, -1};

    void encodeAt(double seconds);

    std::optional<double> firstSeconds_;
    double lastSeconds_ = 0;          // the last picture encoded, on the media clock
    std::int64_t lastPts_ = -1;
    PacketPtr held_;                  // the last video packet, until the next one gives its duration
    bool holding_ = false;
    std::int64_t nextCut_ = 0;
};

} // namespace videowriting
