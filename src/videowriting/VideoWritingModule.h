#pragma once

#include "videowriting/LeftoverRemuxer.h"
#include "videowriting/VideoWriter.h"
#include "videowriting/WriterLog.h"

#include <filesystem>
#include <memory>

namespace videowriting {

// What the module of the video writer offers. FFmpeg's libraries are a
// hundred shared libraries and some 25 MiB that every start of the program
// would pay for; they are loaded with this module when the first recording
// starts or the first leftover is recovered, and stay loaded.
struct VideoWritingEntry {
    int version;
    std::unique_ptr<VideoWriter> (*openWriter)(const std::filesystem::path &url, const VideoWriter::Options &options);
    LeftoverRemuxer::Result (*remux)(const std::filesystem::path &leftover, const std::filesystem::path &output);
    void (*setLogHandler)(WriterLog::Handler handler);
};

class VideoWritingModule {
public:
    static constexpr const char *fileName = "glimpso-videowriting.so";
    static constexpr int version = 1;
    static constexpr const char *entryName = "glimpso_videowriting_entry";

    // The module in `folder`, loaded at the first call; its log lines go to
    // `log`. Throws std::runtime_error when it can't be loaded, with the reason.
    static const VideoWritingModule &load(const std::filesystem::path &folder, WriterLog::Handler log = nullptr);

    // A writer of the module's kind (FFmpegVideoWriter); throws as it does.
    std::unique_ptr<VideoWriter> openWriter(const std::filesystem::path &url, const VideoWriter::Options &options) const
    {
        return entry_->openWriter(url, options);
    }
    LeftoverRemuxer::Result remux(const std::filesystem::path &leftover, const std::filesystem::path &output) const
    {
        return entry_->remux(leftover, output);
    }

private:
    explicit VideoWritingModule(const VideoWritingEntry *entry) : entry_(entry) {}
    const VideoWritingEntry *entry_;
};

} // namespace videowriting
