#pragma once

#include "videowriting/EncodingPipeline.h"
#include "videowriting/VideoWriter.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace videowriting {

// VideoWriter on FFmpeg's libraries. `append` copies what changed in the frame
// (or keeps the frame, when the caller lets it) and queues it; one thread of
// the writer's own converts it into the encoder's picture, encodes it, and
// writes the fragments. A frame that finds the queue full is dropped and
// counted. A frame with nothing changed costs neither copy nor conversion: the
// picture that stands is encoded once more at the new time.
class FFmpegVideoWriter final : public VideoWriter {
public:
    struct Tuning {
        // Length of a fragment; 0 cuts one after every frame.
        double fragmentSeconds = 1.0;
        // Frames waiting to be encoded, at most; and bytes of copied pixels,
        // at most, in whole frames' worth.
        int maxPendingFrames = 8;
        int maxPendingWholeFrames = 3;
        // Seconds of sound waiting, at most, per track.
        double maxPendingSoundSeconds = 2.0;
        // Called on the writer's thread before each frame is converted (tests
        // hold the writer up with it).
        std::function<void()> beforePicture;
    };

    // Creates the file and writes its header. Throws WriterError, MediaError
    // or std::system_error (a folder that is missing or not writable).
    FFmpegVideoWriter(std::filesystem::path url, const Options &options);
    FFmpegVideoWriter(std::filesystem::path url, const Options &options, Tuning tuning);
    // Finishes what was taken (the file stays), or removes a file without frames.
    ~FFmpegVideoWriter() override;

    void append(const VideoFrame &frame) override;
    void appendAudio(const SoundChunk &chunk, bool fromMicrophone) override;
    Stats finish(double endTime) override;
    void cancel() override;
    const std::filesystem::path &url() const override { return url_; }

    // "libx264", "h264_vaapi", ...
    const std::string &encoderName() const;
    // The sound tracks that could be added.
    bool hasSystemAudioTrack() const { return systemTrack_ >= 0; }
    bool hasMicrophoneTrack() const { return microphoneTrack_ >= 0; }

private:
    struct Job;

    void enqueuePicture(const VideoFrame &frame);
    void stopWorker();
    void work();
    void run(Job &job);
    void repeat(double until);
    static constexpr double repeatDelay = 0.25;
    static std::vector<EncodingPipeline::Patch> patches(const Job &job);
    void done(Job &job);

    std::filesystem::path url_;
    Options options_;
    Tuning tuning_;
    int width_ = 0;
    int height_ = 0;
    int systemTrack_ = -1;
    int microphoneTrack_ = -1;
    std::unique_ptr<EncodingPipeline> pipeline_;

    // Guarded by lock_.
    std::mutex lock_;
    std::condition_variable wake_;
    std::deque<Job> jobs_;
    std::vector<std::vector<std::uint8_t>> spareBuffers_;
    bool started_ = false;
    bool finished_ = false;
    double lastSeconds_ = 0;
    double lastAppendClock_ = 0;   // the media clock when the last frame came
    int pendingPictures_ = 0;
    std::size_t pendingBytes_ = 0;
    std::int64_t pendingSound_[2] = {0, 0};
    std::exception_ptr failure_;
    Stats stats_;

    std::thread worker_;
};

} // namespace videowriting
