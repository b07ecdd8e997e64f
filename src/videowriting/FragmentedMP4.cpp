#include "videowriting/FragmentedMP4.h"

extern "C" {
#include <libavutil/dict.h>
}

namespace videowriting {

FragmentedMP4::FragmentedMP4(std::filesystem::path path) : path_(std::move(path))
{
    const int status = avformat_alloc_output_context2(&context_, nullptr, "mp4", path_.c_str());
    if (status < 0 || !context_)
        throwMediaError("The MP4 muxer couldn't be made", status);
}

FragmentedMP4::~FragmentedMP4()
{
    abandon();
}

int FragmentedMP4::addTrack(const AVCodecContext *encoder)
{
    AVStream *stream = avformat_new_stream(context_, nullptr);
    if (!stream)
        return -1;
    if (avcodec_parameters_from_context(stream->codecpar, encoder) < 0)
        return -1;
    stream->time_base = encoder->time_base;
    if (encoder->codec_type == AVMEDIA_TYPE_VIDEO) {
        stream->avg_frame_rate = encoder->framerate;
        stream->r_frame_rate = encoder->framerate;
    }
    return stream->index;
}

void FragmentedMP4::begin()
{
    int status = avio_open(&context_->pb, path_.c_str(), AVIO_FLAG_WRITE);
    if (status < 0)
        throwMediaError("Couldn't create " + path_.string(), status);
    AVDictionary *options = nullptr;
    // The writer says when a fragment ends (cutFragment); the movie header,
    // written at once, holds no samples, the fragments carry them all. Every
    // track starts at 0 (EncodingPipeline), so no edit list is needed.
    av_dict_set(&options, "movflags", "frag_custom+empty_moov+default_base_moof", 0);
    status = avformat_write_header(context_, &options);
    av_dict_free(&options);
    if (status < 0)
        throwMediaError("Couldn't start " + path_.string(), status);
    avio_flush(context_->pb);
    begun_ = true;
}

void FragmentedMP4::write(AVPacket *packet, int track, AVRational timeBase)
{
    packet->stream_index = track;
    av_packet_rescale_ts(packet, timeBase, context_->streams[track]->time_base);
    const int status = av_write_frame(context_, packet);
    av_packet_unref(packet);
    if (status < 0)
        throwMediaError("Couldn't write to " + path_.string(), status);
    pendingData_ = true;
}

void FragmentedMP4::cutFragment()
{
    if (!pendingData_)
        return;
    // A null packet, with frag_custom, ends the fragment and writes it.
    const int status = av_write_frame(context_, nullptr);
    if (status < 0)
        throwMediaError("Couldn't write to " + path_.string(), status);
    avio_flush(context_->pb);
    if (context_->pb->error < 0)
        throwMediaError("Couldn't write to " + path_.string(), context_->pb->error);
    pendingData_ = false;
}

void FragmentedMP4::finish()
{
    if (!begun_)
        return;
    int status = av_write_trailer(context_);
    if (status >= 0)
        avio_flush(context_->pb);
    if (status >= 0 && context_->pb->error < 0)
        status = context_->pb->error;
    const int closed = avio_closep(&context_->pb);
    begun_ = false;
    if (status < 0)
        throwMediaError("Couldn't finish " + path_.string(), status);
    if (closed < 0)
        throwMediaError("Couldn't close " + path_.string(), closed);
}

void FragmentedMP4::abandon()
{
    close();
}

void FragmentedMP4::close()
{
    if (!context_)
        return;
    if (context_->pb)
        avio_closep(&context_->pb);
    avformat_free_context(context_);
    context_ = nullptr;
    begun_ = false;
}

} // namespace videowriting
