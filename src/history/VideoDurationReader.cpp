#include "history/VideoDurationReader.h"

#include <QFile>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}

#include <algorithm>
#include <cmath>
#include <memory>

namespace VideoDurationReader {

namespace {

struct InputCloser {
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
};

double streamSeconds(const AVFormatContext &context)
{
    // Fragmented MP4 has no length in its movie header; the demuxer still knows
    // each track's length from the fragments' index.
    double longest = 0;
    for (unsigned i = 0; i < context.nb_streams; ++i) {
        const AVStream *stream = context.streams[i];
        if (stream->duration == AV_NOPTS_VALUE || stream->duration <= 0)
            continue;
        longest = std::max(longest, static_cast<double>(stream->duration) * av_q2d(stream->time_base));
    }
    return longest;
}

} // namespace

double seconds(const QString &path)
{
    // Captures are MP4 or QuickTime, which one demuxer reads: naming it spares
    // probing the file against every format libavformat knows, which costs
    // more than reading the header itself. Whatever else it is, it fails here.
    static const AVInputFormat *const quickTime = av_find_input_format("mov");
    AVFormatContext *raw = nullptr;
    if (avformat_open_input(&raw, QFile::encodeName(path).constData(), quickTime, nullptr) < 0)
        return 0;
    std::unique_ptr<AVFormatContext, InputCloser> context(raw);
    double value = 0;
    if (context->duration != AV_NOPTS_VALUE && context->duration > 0)
        value = static_cast<double>(context->duration) / AV_TIME_BASE;
    else
        value = streamSeconds(*context);
    return std::isfinite(value) ? value : 0;
}

void quietLibraryLog()
{
    av_log_set_level(AV_LOG_QUIET);
}

} // namespace VideoDurationReader
