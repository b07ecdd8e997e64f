#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/buffer.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
}

#include <functional>
#include <memory>
#include <string>

namespace videowriting {

// FFmpeg's objects, each owned by one std::unique_ptr that frees it the way the
// library asks.
struct CodecContextFree {
    void operator()(AVCodecContext *c) const { avcodec_free_context(&c); }
};
struct FrameFree {
    void operator()(AVFrame *f) const { av_frame_free(&f); }
};
struct PacketFree {
    void operator()(AVPacket *p) const { av_packet_free(&p); }
};
struct BufferUnref {
    void operator()(AVBufferRef *b) const { av_buffer_unref(&b); }
};
struct ResamplerFree {
    void operator()(SwrContext *s) const { swr_free(&s); }
};
struct AudioFifoFree {
    void operator()(AVAudioFifo *f) const { av_audio_fifo_free(f); }
};
struct InputClose {
    void operator()(AVFormatContext *f) const { avformat_close_input(&f); }
};

using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextFree>;
using FramePtr = std::unique_ptr<AVFrame, FrameFree>;
using PacketPtr = std::unique_ptr<AVPacket, PacketFree>;
using BufferPtr = std::unique_ptr<AVBufferRef, BufferUnref>;
using ResamplerPtr = std::unique_ptr<SwrContext, ResamplerFree>;
using AudioFifoPtr = std::unique_ptr<AVAudioFifo, AudioFifoFree>;
using InputPtr = std::unique_ptr<AVFormatContext, InputClose>;

// Hands every packet `encoder` has ready to `sink`, through `packet`; throws
// "`what`: text" when the encoder fails.
void receivePackets(AVCodecContext *encoder, AVPacket *packet, const std::function<void(AVPacket *)> &sink,
                    const char *what);

// FFmpeg's text for an error code.
std::string mediaErrorText(int code);
// Throws MediaError "`what`: text", or std::system_error for codes that are
// an errno (a missing folder, a full disk), so that they read as such.
[[noreturn]] void throwMediaError(const std::string &what, int code);

} // namespace videowriting
