#include "history/VideoDurationReader.h"

#include "history/HeaderFile.h"
#include "history/MediaLibraries.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <memory>

namespace VideoDurationReader {

namespace {

constexpr int ioBufferSize = 4096;

// The demuxer reads through this, so that it reads only what it asks for.
int readPacket(void *opaque, uint8_t *buffer, int size)
{
    const qint64 n = static_cast<HeaderFile *>(opaque)->read(buffer, size);
    if (n < 0)
        return AVERROR(EIO);
    return n == 0 ? AVERROR_EOF : int(n);
}

int64_t seekTo(void *opaque, int64_t offset, int whence)
{
    auto *file = static_cast<HeaderFile *>(opaque);
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return file->size();
    case SEEK_SET:
        break;
    case SEEK_CUR:
        offset += file->position();
        break;
    case SEEK_END:
        offset += file->size();
        break;
    default:
        return AVERROR(EINVAL);
    }
    return file->seek(offset) ? offset : AVERROR(EINVAL);
}

struct IoContextDeleter {
    const MediaLibraries::AvFormat *av;
    void operator()(AVIOContext *io) const
    {
        av->freep(&io->buffer);
        av->ioContextFree(&io);
    }
};

struct InputCloser {
    const MediaLibraries::AvFormat *av;
    void operator()(AVFormatContext *context) const { av->closeInput(&context); }
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
    HeaderFile file(path);
    if (!file.isOpen())
        return 0;
    const MediaLibraries::AvFormat *av = MediaLibraries::avFormat();
    if (!av)
        return 0;
    static const AVInputFormat *const quickTime = av->findInputFormat("mov");
    auto *buffer = static_cast<unsigned char *>(av->malloc(ioBufferSize));
    if (!buffer)
        return 0;
    // Declared before the format context, so that it outlives it.
    std::unique_ptr<AVIOContext, IoContextDeleter> io(
        av->ioAllocContext(buffer, ioBufferSize, 0, &file, readPacket, nullptr, seekTo), IoContextDeleter{av});
    if (!io) {
        av->free(buffer);
        return 0;
    }
    AVFormatContext *raw = av->allocContext();
    if (!raw)
        return 0;
    raw->pb = io.get();
    // On failure avformat_open_input frees the context itself.
    if (av->openInput(&raw, QFile::encodeName(path).constData(), quickTime, nullptr) < 0)
        return 0;
    std::unique_ptr<AVFormatContext, InputCloser> context(raw, InputCloser{av});
    double value = 0;
    if (context->duration != AV_NOPTS_VALUE && context->duration > 0)
        value = static_cast<double>(context->duration) / AV_TIME_BASE;
    else
        value = streamSeconds(*context);
    return std::isfinite(value) ? value : 0;
}

void quietLibraryLog()
{
    MediaLibraries::quietAvFormatLog();
}

} // namespace VideoDurationReader
