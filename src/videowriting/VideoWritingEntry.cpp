// The one symbol the video writer's module exports (VideoWritingModule).
#include "videowriting/FFmpegVideoWriter.h"
#include "videowriting/VideoWritingModule.h"

extern "C" {
#include <libavutil/log.h>
}

#include <cstdarg>
#include <string>

namespace {

using namespace videowriting;

// FFmpeg's errors join the writer's log; its chatter is dropped.
void forwardLibraryLog(void *context, int level, const char *format, va_list arguments)
{
    if (level > AV_LOG_ERROR)
        return;
    char line[1024];
    int printPrefix = 1;
    av_log_format_line2(context, level, format, arguments, line, sizeof line, &printPrefix);
    std::string text(line);
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    if (!text.empty())
        WriterLog::error(text);
}

std::unique_ptr<VideoWriter> openWriter(const std::filesystem::path &url, const VideoWriter::Options &options)
{
    return std::make_unique<FFmpegVideoWriter>(url, options);
}

void setLogHandler(WriterLog::Handler handler)
{
    WriterLog::setHandler(handler);
    av_log_set_callback(forwardLibraryLog);
}

const VideoWritingEntry entry{VideoWritingModule::version, openWriter, LeftoverRemuxer::remux, setLogHandler};

} // namespace

extern "C" __attribute__((visibility("default"))) const VideoWritingEntry *glimpso_videowriting_entry()
{
    return &entry;
}
