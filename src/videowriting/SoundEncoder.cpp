#include "videowriting/SoundEncoder.h"

#include "videowriting/VideoWriter.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <algorithm>

namespace videowriting {

SoundEncoder::SoundEncoder(int channels, std::int64_t bitRate)
    : frame_(av_frame_alloc()), packet_(av_packet_alloc()), timeline_(sampleRate)
{
    const AVCodec *codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!codec)
        throw MediaError("No AAC encoder", AVERROR_ENCODER_NOT_FOUND);
    context_.reset(avcodec_alloc_context3(codec));
    if (!context_ || !frame_ || !packet_)
        throw MediaError("No memory for the sound encoder", AVERROR(ENOMEM));
    context_->sample_fmt = AV_SAMPLE_FMT_FLTP;
    context_->sample_rate = sampleRate;
    av_channel_layout_default(&context_->ch_layout, channels);
    context_->bit_rate = bitRate;
    context_->time_base = AVRational{1, sampleRate};
    context_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const int status = avcodec_open2(context_.get(), codec, nullptr);
    if (status < 0)
        throwMediaError("The AAC encoder doesn't open", status);
    fifo_.reset(av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, channels, context_->frame_size * 4));
    if (!fifo_)
        throw MediaError("No memory for the sound encoder", AVERROR(ENOMEM));
}

void SoundEncoder::start(double seconds)
{
    timeline_.start(seconds);
}

void SoundEncoder::ensureResampler(const SoundChunk &chunk)
{
    if (resampler_ && resamplerRate_ == chunk.sampleRate && resamplerChannels_ == chunk.channels)
        return;
    AVChannelLayout in{};
    av_channel_layout_default(&in, chunk.channels);
    SwrContext *resampler = nullptr;
    int status = swr_alloc_set_opts2(&resampler, &context_->ch_layout, AV_SAMPLE_FMT_FLTP, sampleRate, &in,
                                     AV_SAMPLE_FMT_FLT, chunk.sampleRate, 0, nullptr);
    av_channel_layout_uninit(&in);
    if (status >= 0)
        status = swr_init(resampler);
    if (status < 0) {
        swr_free(&resampler);
        throwMediaError("The sound can't be converted for the track", status);
    }
    resampler_.reset(resampler);
    resamplerRate_ = chunk.sampleRate;
    resamplerChannels_ = chunk.channels;
}

void SoundEncoder::add(const SoundChunk &chunk, const PacketSink &sink)
{
    const int inFrames = chunk.frames();
    if (inFrames <= 0 || chunk.sampleRate <= 0)
        return;
    ensureResampler(chunk);
    const int channels = context_->ch_layout.nb_channels;
    const int capacity = int(swr_get_out_samples(resampler_.get(), inFrames));
    converted_.resize(std::size_t(channels));
    std::vector<float *> planes(static_cast<std::size_t>(channels));
    for (int c = 0; c < channels; ++c) {
        converted_[std::size_t(c)].resize(std::size_t(std::max(capacity, 1)));
        planes[std::size_t(c)] = converted_[std::size_t(c)].data();
    }
    const auto *input = reinterpret_cast<const std::uint8_t *>(chunk.samples.data());
    const int frames = swr_convert(resampler_.get(), reinterpret_cast<std::uint8_t **>(planes.data()), capacity,
                                   &input, inFrames);
    if (frames <= 0)
        return;
    const SoundTimeline::Placement placement = timeline_.place(chunk.seconds, frames);
    if (placement.keep <= 0)
        return;
    pushSilence(placement.silence, sink);
    for (auto &plane : planes)
        plane += placement.skip;
    push(planes.data(), int(placement.keep), sink);
}

void SoundEncoder::finish(double endTime, const PacketSink &sink)
{
    if (timeline_.started()) {
        const std::int64_t end = timeline_.frameAt(endTime);
        const std::int64_t laid = timeline_.end();
        if (end > laid) {
            pushSilence(end - laid, sink);
        } else {
            // Sound past the end that is still waiting in the queue is left out.
            const std::int64_t waiting = av_audio_fifo_size(fifo_.get());
            const std::int64_t surplus = std::min(laid - end, waiting);
            if (surplus > 0) {
                std::vector<std::vector<float>> keep(std::size_t(context_->ch_layout.nb_channels),
                                                     std::vector<float>(std::size_t(waiting)));
                std::vector<void *> planes;
                for (auto &plane : keep)
                    planes.push_back(plane.data());
                av_audio_fifo_read(fifo_.get(), planes.data(), int(waiting));
                av_audio_fifo_write(fifo_.get(), planes.data(), int(waiting - surplus));
            }
        }
    }
    encodeFull(sink, true);
    send(nullptr, sink);
}

void SoundEncoder::push(const float *const *planes, int frames, const PacketSink &sink)
{
    if (frames <= 0)
        return;
    std::vector<void *> data;
    for (int c = 0; c < context_->ch_layout.nb_channels; ++c)
        data.push_back(const_cast<float *>(planes[c]));
    if (av_audio_fifo_write(fifo_.get(), data.data(), frames) < frames)
        throw MediaError("No memory for the sound", AVERROR(ENOMEM));
    encodeFull(sink, false);
}

void SoundEncoder::pushSilence(std::int64_t frames, const PacketSink &sink)
{
    const int channels = context_->ch_layout.nb_channels;
    const std::vector<float> zeros(std::size_t(context_->frame_size), 0.0f);
    std::vector<const float *> planes(std::size_t(channels), zeros.data());
    while (frames > 0) {
        const int step = int(std::min<std::int64_t>(frames, context_->frame_size));
        push(planes.data(), step, sink);
        frames -= step;
    }
}

void SoundEncoder::encodeFull(const PacketSink &sink, bool all)
{
    const int size = context_->frame_size;
    for (;;) {
        const int waiting = av_audio_fifo_size(fifo_.get());
        if (waiting == 0 || (waiting < size && !all))
            return;
        const int take = std::min(waiting, size);
        av_frame_unref(frame_.get());
        frame_->nb_samples = take;
        frame_->format = AV_SAMPLE_FMT_FLTP;
        frame_->sample_rate = sampleRate;
        av_channel_layout_copy(&frame_->ch_layout, &context_->ch_layout);
        if (av_frame_get_buffer(frame_.get(), 0) < 0)
            throw MediaError("No memory for the sound", AVERROR(ENOMEM));
        av_audio_fifo_read(fifo_.get(), reinterpret_cast<void **>(frame_->data), take);
        frame_->pts = encodedFrames_;
        encodedFrames_ += take;
        send(frame_.get(), sink);
    }
}

void SoundEncoder::send(AVFrame *frame, const PacketSink &sink)
{
    int status = avcodec_send_frame(context_.get(), frame);
    if (status < 0 && !(frame == nullptr && status == AVERROR_EOF))
        throwMediaError("The sound encoder refused its samples", status);
    receivePackets(context_.get(), packet_.get(), sink, "The sound encoder failed");
}

} // namespace videowriting
