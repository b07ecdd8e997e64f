#include "videowriting/LeftoverRemuxer.h"

#include "videowriting/FragmentScanner.h"
#include "videowriting/MediaHandles.h"
#include "videowriting/VideoWriter.h"

#include <cstdio>
#include <vector>

namespace videowriting {

namespace {

// Reads the file only up to `limit`: the demuxer never sees the half-written tail.
struct LimitedFile {
    std::FILE *file = nullptr;
    std::int64_t limit = 0;
    std::int64_t position = 0;
};

int readLimited(void *opaque, std::uint8_t *buffer, int size)
{
    auto *f = static_cast<LimitedFile *>(opaque);
    const std::int64_t left = f->limit - f->position;
    if (left <= 0)
        return AVERROR_EOF;
    const auto want = std::size_t(std::min<std::int64_t>(size, left));
    const std::size_t got = std::fread(buffer, 1, want, f->file);
    if (got == 0)
        return std::ferror(f->file) ? AVERROR(EIO) : AVERROR_EOF;
    f->position += std::int64_t(got);
    return int(got);
}

std::int64_t seekLimited(void *opaque, std::int64_t offset, int whence)
{
    auto *f = static_cast<LimitedFile *>(opaque);
    if (whence & AVSEEK_SIZE)
        return f->limit;
    std::int64_t target = offset;
    if ((whence & ~AVSEEK_FORCE) == SEEK_CUR)
        target = f->position + offset;
    else if ((whence & ~AVSEEK_FORCE) == SEEK_END)
        target = f->limit + offset;
    if (target < 0 || target > f->limit || fseeko(f->file, off_t(target), SEEK_SET) != 0)
        return -1;
    f->position = target;
    return target;
}

struct OutputFree {
    void operator()(AVFormatContext *c) const
    {
        if (c->pb)
            avio_closep(&c->pb);
        avformat_free_context(c);
    }
};

struct IOContextFree {
    void operator()(AVIOContext *io) const
    {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};

} // namespace

LeftoverRemuxer::Result LeftoverRemuxer::remux(const std::filesystem::path &leftover,
                                                const std::filesystem::path &output)
{
    const auto layout = FragmentScanner::scanFile(leftover);
    if (!layout)
        throw std::system_error(errno ? errno : EIO, std::generic_category(), "Couldn't read " + leftover.string());
    if (layout->readable == 0 || layout->fragments == 0)
        throw MediaError(leftover.filename().string() + " holds no whole part of a recording", AVERROR_INVALIDDATA);

    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(leftover.c_str(), "rb"), &std::fclose);
    if (!file)
        throw std::system_error(errno, std::generic_category(), "Couldn't open " + leftover.string());
    LimitedFile limited{file.get(), std::int64_t(layout->readable), 0};

    constexpr int bufferSize = 1 << 16;
    auto *buffer = static_cast<std::uint8_t *>(av_malloc(bufferSize));
    std::unique_ptr<AVIOContext, IOContextFree> io(
        avio_alloc_context(buffer, bufferSize, 0, &limited, readLimited, nullptr, seekLimited));
    if (!io) {
        av_free(buffer);
        throw MediaError("No memory to read " + leftover.string(), AVERROR(ENOMEM));
    }
    AVFormatContext *inputContext = avformat_alloc_context();
    if (!inputContext)
        throw MediaError("No memory to read " + leftover.string(), AVERROR(ENOMEM));
    inputContext->pb = io.get();
    inputContext->flags |= AVFMT_FLAG_CUSTOM_IO;
    int status = avformat_open_input(&inputContext, nullptr, av_find_input_format("mp4"), nullptr);
    if (status < 0)
        throwMediaError("Couldn't read " + leftover.string(), status);
    InputPtr input(inputContext);

    AVFormatContext *outputContext = nullptr;
    status = avformat_alloc_output_context2(&outputContext, nullptr, "mp4", output.c_str());
    if (status < 0)
        throwMediaError("Couldn't make " + output.string(), status);
    std::unique_ptr<AVFormatContext, OutputFree> out(outputContext);
    std::vector<int> trackOf(input->nb_streams, -1);
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const AVStream *in = input->streams[i];
        const AVMediaType type = in->codecpar->codec_type;
        if (type != AVMEDIA_TYPE_VIDEO && type != AVMEDIA_TYPE_AUDIO)
            continue;
        AVStream *stream = avformat_new_stream(out.get(), nullptr);
        if (!stream || avcodec_parameters_copy(stream->codecpar, in->codecpar) < 0)
            throw MediaError("Couldn't make " + output.string(), AVERROR(ENOMEM));
        stream->codecpar->codec_tag = 0;
        // AAC's frames are 1024 samples; the demuxer of a fragmented file doesn't say.
        if (stream->codecpar->codec_id == AV_CODEC_ID_AAC && stream->codecpar->frame_size == 0)
            stream->codecpar->frame_size = 1024;
        stream->time_base = in->time_base;
        stream->avg_frame_rate = in->avg_frame_rate;
        trackOf[i] = stream->index;
    }
    status = avio_open(&out->pb, output.c_str(), AVIO_FLAG_WRITE);
    if (status < 0)
        throwMediaError("Couldn't create " + output.string(), status);
    status = avformat_write_header(out.get(), nullptr);
    if (status < 0)
        throwMediaError("Couldn't write " + output.string(), status);

    Result result;
    result.wasComplete = layout->finished;
    PacketPtr packet(av_packet_alloc());
    std::int64_t videoEnd = 0;
    AVRational videoBase{1, 1};
    // A damaged packet ends the copy: what came before it is kept.
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        const int in = packet->stream_index;
        const int track = in >= 0 && unsigned(in) < trackOf.size() ? trackOf[std::size_t(in)] : -1;
        if (track < 0 || packet->size <= 0) {
            av_packet_unref(packet.get());
            continue;
        }
        const AVRational from = input->streams[in]->time_base;
        if (input->streams[in]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && packet->pts != AV_NOPTS_VALUE) {
            videoEnd = std::max(videoEnd, packet->pts + packet->duration);
            videoBase = from;
        }
        packet->stream_index = track;
        packet->pos = -1;
        av_packet_rescale_ts(packet.get(), from, out->streams[track]->time_base);
        status = av_interleaved_write_frame(out.get(), packet.get());
        av_packet_unref(packet.get());
        if (status < 0)
            throwMediaError("Couldn't write " + output.string(), status);
        ++result.packets;
    }
    if (result.packets == 0)
        throw MediaError(leftover.filename().string() + " holds no whole part of a recording", AVERROR_INVALIDDATA);
    status = av_write_trailer(out.get());
    if (status < 0)
        throwMediaError("Couldn't finish " + output.string(), status);
    status = avio_closep(&out->pb);
    if (status < 0)
        throwMediaError("Couldn't close " + output.string(), status);
    result.seconds = double(videoEnd) * av_q2d(videoBase);
    return result;
}

} // namespace videowriting
