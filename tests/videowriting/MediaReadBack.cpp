#include "MediaReadBack.h"

#include "videowriting/MediaHandles.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
}

#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>

namespace MediaReadBack {

namespace {

using Input = videowriting::InputPtr;
using videowriting::CodecContextPtr;
using videowriting::FramePtr;
using videowriting::PacketPtr;

Input open(const std::filesystem::path &path)
{
    AVFormatContext *context = nullptr;
    if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) < 0)
        return nullptr;
    Input input(context);
    if (avformat_find_stream_info(context, nullptr) < 0)
        return nullptr;
    return input;
}

// Decodes stream `stream` and hands each frame to `each`.
void decode(AVFormatContext *input, int stream, const std::function<void(const AVFrame *)> &each)
{
    const AVCodecParameters *parameters = input->streams[stream]->codecpar;
    const AVCodec *codec = avcodec_find_decoder(parameters->codec_id);
    CodecContextPtr decoder(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(decoder.get(), parameters);
    decoder->pkt_timebase = input->streams[stream]->time_base;
    if (avcodec_open2(decoder.get(), codec, nullptr) < 0)
        return;
    PacketPtr packet(av_packet_alloc());
    FramePtr frame(av_frame_alloc());
    const auto drain = [&] {
        while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0) {
            each(frame.get());
            av_frame_unref(frame.get());
        }
    };
    while (av_read_frame(input, packet.get()) >= 0) {
        if (packet->stream_index == stream) {
            avcodec_send_packet(decoder.get(), packet.get());
            drain();
        }
        av_packet_unref(packet.get());
    }
    avcodec_send_packet(decoder.get(), nullptr);
    drain();
}

} // namespace

const Track *Facts::video() const
{
    for (const Track &t : tracks)
        if (t.video)
            return &t;
    return nullptr;
}

std::vector<const Track *> Facts::sound() const
{
    std::vector<const Track *> list;
    for (const Track &t : tracks)
        if (!t.video)
            list.push_back(&t);
    return list;
}

Facts probe(const std::filesystem::path &path)
{
    Facts facts;
    Input input = open(path);
    if (!input)
        return facts;
    facts.opened = true;
    facts.duration = input->duration > 0 ? double(input->duration) / AV_TIME_BASE : 0;
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const AVCodecParameters *p = input->streams[i]->codecpar;
        Track track;
        track.codec = avcodec_get_name(p->codec_id);
        track.video = p->codec_type == AVMEDIA_TYPE_VIDEO;
        track.width = p->width;
        track.height = p->height;
        track.channels = p->ch_layout.nb_channels;
        track.sampleRate = p->sample_rate;
        track.start = 1e9;
        const AVStream *stream = input->streams[i];
        if (stream->duration > 0)
            track.duration = double(stream->duration) * av_q2d(stream->time_base);
        facts.tracks.push_back(track);
    }
    PacketPtr packet(av_packet_alloc());
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        Track &track = facts.tracks[std::size_t(packet->stream_index)];
        const double base = av_q2d(input->streams[packet->stream_index]->time_base);
        ++track.packets;
        if (packet->pts != AV_NOPTS_VALUE) {
            track.start = std::min(track.start, double(packet->pts) * base);
            track.end = std::max(track.end, double(packet->pts + packet->duration) * base);
        }
        av_packet_unref(packet.get());
    }
    for (Track &t : facts.tracks)
        if (t.packets == 0)
            t.start = 0;
    return facts;
}

void decodeVideo(const std::filesystem::path &path, const std::function<void(const Picture &)> &each)
{
    Input input = open(path);
    if (!input)
        return;
    const int stream = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (stream < 0)
        return;
    const double base = av_q2d(input->streams[stream]->time_base);
    decode(input.get(), stream, [&](const AVFrame *frame) {
        Picture picture;
        picture.seconds = double(frame->best_effort_timestamp) * base;
        picture.width = frame->width;
        picture.height = frame->height;
        picture.luma.resize(std::size_t(frame->width) * std::size_t(frame->height));
        for (int y = 0; y < frame->height; ++y)
            std::copy_n(frame->data[0] + std::ptrdiff_t(y) * frame->linesize[0], frame->width,
                        picture.luma.begin() + std::ptrdiff_t(y) * frame->width);
        const int cw = frame->width / 2, ch = frame->height / 2;
        picture.u.resize(std::size_t(cw) * std::size_t(ch));
        picture.v.resize(std::size_t(cw) * std::size_t(ch));
        for (int y = 0; y < ch; ++y) {
            std::copy_n(frame->data[1] + std::ptrdiff_t(y) * frame->linesize[1], cw,
                        picture.u.begin() + std::ptrdiff_t(y) * cw);
            std::copy_n(frame->data[2] + std::ptrdiff_t(y) * frame->linesize[2], cw,
                        picture.v.begin() + std::ptrdiff_t(y) * cw);
        }
        each(picture);
    });
}

Sound decodeSound(const std::filesystem::path &path, int index)
{
    Sound sound;
    Input input = open(path);
    if (!input)
        return sound;
    int stream = -1;
    for (unsigned i = 0, seen = 0; i < input->nb_streams; ++i) {
        if (input->streams[i]->codecpar->codec_type != AVMEDIA_TYPE_AUDIO)
            continue;
        if (int(seen++) == index) {
            stream = int(i);
            break;
        }
    }
    if (stream < 0)
        return sound;
    const double base = av_q2d(input->streams[stream]->time_base);
    bool first = true;
    decode(input.get(), stream, [&](const AVFrame *frame) {
        if (first) {
            sound.start = double(frame->best_effort_timestamp) * base;
            sound.sampleRate = frame->sample_rate;
            first = false;
        }
        const int channels = frame->ch_layout.nb_channels;
        for (int i = 0; i < frame->nb_samples; ++i) {
            float sum = 0;
            for (int c = 0; c < channels; ++c) {
                if (frame->format == AV_SAMPLE_FMT_FLTP)
                    sum += reinterpret_cast<const float *>(frame->data[c])[i];
                else if (frame->format == AV_SAMPLE_FMT_FLT)
                    sum += reinterpret_cast<const float *>(frame->data[0])[i * channels + c];
            }
            sound.samples.push_back(sum / float(std::max(channels, 1)));
        }
    });
    return sound;
}

double dominantFrequency(const std::vector<float> &samples, int sampleRate)
{
    // Goertzel at each whole frequency over at most a second of the middle.
    const std::size_t length = std::min<std::size_t>(samples.size(), std::size_t(sampleRate));
    const std::size_t from = (samples.size() - length) / 2;
    double best = 0, bestPower = -1;
    for (int hz = 50; hz <= 4000; ++hz) {
        const double w = 2 * std::numbers::pi * hz / sampleRate;
        const double k = 2 * std::cos(w);
        double s1 = 0, s2 = 0;
        for (std::size_t i = 0; i < length; ++i) {
            const double s = samples[from + i] + k * s1 - s2;
            s2 = s1;
            s1 = s;
        }
        const double power = s1 * s1 + s2 * s2 - k * s1 * s2;
        if (power > bestPower) {
            bestPower = power;
            best = hz;
        }
    }
    return best;
}

std::optional<std::string> ffmpegErrors(const std::filesystem::path &path)
{
    const std::string command = "ffmpeg -nostdin -v error -i '" + path.string() + "' -f null - 2>&1";
    std::FILE *pipe = popen(command.c_str(), "r");
    if (!pipe)
        return std::nullopt;
    std::string output;
    char buffer[512];
    while (std::fgets(buffer, sizeof buffer, pipe))
        output += buffer;
    const int status = pclose(pipe);
    if (status == -1)
        return std::nullopt;
    return output;
}

} // namespace MediaReadBack
