#pragma once

#include "videowriting/SoundChunk.h"
#include "videowriting/VideoFrame.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace videowriting {

// Writes a live recording into an MP4 with up to three tracks: video, the
// system's sound and the microphone. The file is cut in fragments of a second,
// each written out as soon as it is complete, so a recording that is cut off by
// a crash can still be read up to its last fragment.
//
// `append` and `appendAudio` come from the capture threads and never wait: a
// frame the writer can't take now is counted as dropped. `finish` and `cancel`
// come from the owner. Sound from before the first frame is dropped: the file's
// time begins with the first video frame.
//
// The implementation (FFmpeg) lives in a module that is loaded when the first
// recording starts (VideoWritingModule); this header needs none of it.
class VideoWriter {
public:
    // Stored as its text ("hevc", "h264").
    enum class Codec { hevc, h264 };

    struct Options {
        int width = 0;
        int height = 0;
        int framesPerSecond = 30;
        Codec codec = Codec::hevc;
        bool systemAudio = false;
        bool microphone = false;
        friend bool operator==(const Options &, const Options &) = default;
    };

    struct Stats {
        // Frames taken by the writer.
        std::int64_t videoFrames = 0;
        // Frames it could not take.
        std::int64_t droppedFrames = 0;
        friend bool operator==(const Stats &, const Stats &) = default;
    };

    // The writer's own failures, each with its text for the user. Failures of
    // the file or the libraries below are passed on as they come
    // (std::system_error, MediaError).
    class WriterError : public std::runtime_error {
    public:
        enum class Case { cannotAddInput, cannotStart, cannotFinish, noFrames };

        static WriterError cannotAddInput(const std::string &track);
        static WriterError cannotStart();
        static WriterError cannotFinish();
        static WriterError noFrames();

        Case which() const { return case_; }
        ~WriterError() override;

    private:
        WriterError(Case which, const std::string &message);
        Case case_;
    };

    virtual ~VideoWriter();

    virtual void append(const VideoFrame &frame) = 0;
    virtual void appendAudio(const SoundChunk &chunk, bool fromMicrophone) = 0;
    // Waits until everything taken is encoded and the file is complete. The
    // last frame shows until `endTime` (media clock). A second call returns the
    // stats and does nothing else. Throws noFrames (and leaves no file) when no
    // frame came.
    virtual Stats finish(double endTime) = 0;
    // Stops and removes the file; after `finish`, does nothing.
    virtual void cancel() = 0;
    virtual const std::filesystem::path &url() const = 0;

    // The average bit rate: width × height × rate × 0.06 (HEVC) or 0.1
    // (H.264), at least 4,000,000 and at most 40,000,000.
    static std::int64_t bitRate(const Options &options);
    // The size the picture is encoded at: 4:2:0 needs even sides, so an odd
    // side loses its last pixel (never below 2).
    static int encodedSide(int side);

    static std::string_view codecName(Codec codec);
    static std::optional<Codec> codecFromName(std::string_view name);
};

// A failure of one of the media libraries, with their text
// ("Invalid data found when processing input").
class MediaError : public std::runtime_error {
public:
    MediaError(const std::string &what, int code);
    int code() const { return code_; }
    ~MediaError() override;

private:
    int code_;
};

} // namespace videowriting
