#include "videowriting/VideoEncoder.h"

#include "videowriting/WriterLog.h"

extern "C" {
#include <libavutil/hwcontext.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <atomic>
#include <filesystem>

namespace videowriting {

namespace {

// The first render node that exists, or empty.
std::string renderNode()
{
    std::error_code error;
    for (int i = 128; i < 136; ++i) {
        const std::string node = "/dev/dri/renderD" + std::to_string(i);
        if (std::filesystem::exists(node, error))
            return node;
    }
    return {};
}

void logHardwareFallbackOnce(const std::string &why)
{
    static std::atomic<bool> logged = false;
    if (!logged.exchange(true))
        WriterLog::info("no hardware video encoder (" + why + "); encoding on the processor");
}

} // namespace

const char *VideoEncoder::softwareEncoder(VideoWriter::Codec codec)
{
    return codec == VideoWriter::Codec::hevc ? "libx265" : "libx264";
}

VideoEncoder::VideoEncoder(const VideoWriter::Options &options, int width, int height)
    : packet_(av_packet_alloc())
{
    if (!packet_ || !(openHardware(options, width, height) || openSoftware(options, width, height)))
        throw VideoWriter::WriterError::cannotAddInput("video");
    picture_.reset(av_frame_alloc());
    if (!picture_)
        throw VideoWriter::WriterError::cannotAddInput("video");
    picture_->format = hardware() ? AV_PIX_FMT_NV12 : AV_PIX_FMT_YUV420P;
    picture_->width = width;
    picture_->height = height;
    if (av_frame_get_buffer(picture_.get(), 0) < 0)
        throw VideoWriter::WriterError::cannotAddInput("video");
    // Black until the first frame paints it.
    const YUVPlanes planes = picture();
    for (int y = 0; y < height; ++y)
        std::fill_n(planes.y + std::ptrdiff_t(y) * planes.yStride, width, std::uint8_t(16));
    for (int y = 0; y < height / 2; ++y) {
        std::fill_n(planes.u + std::ptrdiff_t(y) * planes.uStride, planes.interleaved ? width : width / 2,
                    std::uint8_t(128));
        if (!planes.interleaved)
            std::fill_n(planes.v + std::ptrdiff_t(y) * planes.vStride, width / 2, std::uint8_t(128));
    }
}

void VideoEncoder::configure(AVCodecContext *context, const VideoWriter::Options &options, int width,
                             int height) const
{
    context->width = width;
    context->height = height;
    context->time_base = timeBase;
    context->framerate = AVRational{options.framesPerSecond, 1};
    context->bit_rate = VideoWriter::bitRate(options);
    // A key frame at least every two seconds.
    context->gop_size = options.framesPerSecond * 2;
    // No frames held back for reordering: each frame leaves the encoder as
    // soon as it can, so the last fragment before a crash is as late as can be.
    context->max_b_frames = 0;
    context->color_primaries = AVCOL_PRI_BT709;
    context->color_trc = AVCOL_TRC_BT709;
    context->colorspace = AVCOL_SPC_BT709;
    context->color_range = AVCOL_RANGE_MPEG;
    // The parameter sets go into the movie header, which is written first.
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
}

bool VideoEncoder::openHardware(const VideoWriter::Options &options, int width, int height)
{
    const std::string node = renderNode();
    if (node.empty()) {
        logHardwareFallbackOnce("no render node");
        return false;
    }
    const char *encoderName = options.codec == VideoWriter::Codec::hevc ? "hevc_vaapi" : "h264_vaapi";
    const AVCodec *codec = avcodec_find_encoder_by_name(encoderName);
    if (!codec) {
        logHardwareFallbackOnce(std::string(encoderName) + " not built in");
        return false;
    }
    AVBufferRef *device = nullptr;
    if (av_hwdevice_ctx_create(&device, AV_HWDEVICE_TYPE_VAAPI, node.c_str(), nullptr, 0) < 0) {
        logHardwareFallbackOnce("VAAPI doesn't open " + node);
        return false;
    }
    BufferPtr deviceRef(device);
    BufferPtr frames(av_hwframe_ctx_alloc(device));
    if (!frames)
        return false;
    auto *framesContext = reinterpret_cast<AVHWFramesContext *>(frames->data);
    framesContext->format = AV_PIX_FMT_VAAPI;
    framesContext->sw_format = AV_PIX_FMT_NV12;
    framesContext->width = width;
    framesContext->height = height;
    framesContext->initial_pool_size = 8;
    if (av_hwframe_ctx_init(frames.get()) < 0) {
        logHardwareFallbackOnce("the render node takes no NV12 pictures of this size");
        return false;
    }
    CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!context)
        return false;
    configure(context.get(), options, width, height);
    context->pix_fmt = AV_PIX_FMT_VAAPI;
    context->hw_frames_ctx = av_buffer_ref(frames.get());
    context->rc_max_rate = context->bit_rate * 2;
    context->rc_buffer_size = int(std::min<std::int64_t>(context->bit_rate * 2, INT32_MAX));
    if (options.codec == VideoWriter::Codec::h264)
        context->profile = FF_PROFILE_H264_HIGH;
    if (avcodec_open2(context.get(), codec, nullptr) < 0) {
        logHardwareFallbackOnce(std::string(encoderName) + " doesn't open on " + node);
        return false;
    }
    upload_.reset(av_frame_alloc());
    if (!upload_)
        return false;
    context_ = std::move(context);
    device_ = std::move(deviceRef);
    name_ = encoderName;
    WriterLog::info("encoding with " + name_ + " on " + node);
    return true;
}

bool VideoEncoder::openSoftware(const VideoWriter::Options &options, int width, int height)
{
    const AVCodec *codec = avcodec_find_encoder_by_name(softwareEncoder(options.codec));
    if (!codec)
        return false;
    CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!context)
        return false;
    configure(context.get(), options, width, height);
    context->pix_fmt = AV_PIX_FMT_YUV420P;
    AVDictionary *settings = nullptr;
    if (options.codec == VideoWriter::Codec::h264) {
        context->profile = FF_PROFILE_H264_HIGH;
        av_dict_set(&settings, "preset", "ultrafast", 0);
        av_dict_set(&settings, "tune", "zerolatency", 0);
    } else {
        av_dict_set(&settings, "preset", "ultrafast", 0);
        av_dict_set(&settings, "tune", "zerolatency", 0);
        av_dict_set(&settings, "x265-params", "log-level=error", 0);
    }
    const int status = avcodec_open2(context.get(), codec, &settings);
    av_dict_free(&settings);
    if (status < 0) {
        WriterLog::error(std::string(codec->name) + " doesn't open: " + mediaErrorText(status));
        return false;
    }
    context_ = std::move(context);
    name_ = codec->name;
    return true;
}

YUVPlanes VideoEncoder::picture()
{
    // An encoder that still holds the last picture gets it to itself, and this
    // one a copy to change.
    if (av_frame_make_writable(picture_.get()) < 0)
        throwMediaError("The video picture couldn't be kept", AVERROR(ENOMEM));
    YUVPlanes planes;
    planes.y = picture_->data[0];
    planes.yStride = picture_->linesize[0];
    planes.u = picture_->data[1];
    planes.uStride = picture_->linesize[1];
    planes.interleaved = picture_->format == AV_PIX_FMT_NV12;
    if (!planes.interleaved) {
        planes.v = picture_->data[2];
        planes.vStride = picture_->linesize[2];
    }
    planes.width = picture_->width;
    planes.height = picture_->height;
    return planes;
}

void VideoEncoder::encode(std::int64_t pts, const PacketSink &sink)
{
    AVFrame *frame = picture_.get();
    if (device_) {
        av_frame_unref(upload_.get());
        int status = av_hwframe_get_buffer(context_->hw_frames_ctx, upload_.get(), 0);
        if (status >= 0)
            status = av_hwframe_transfer_data(upload_.get(), picture_.get(), 0);
        if (status < 0)
            throwMediaError("The picture couldn't be handed to the video encoder", status);
        frame = upload_.get();
    }
    frame->pts = pts;
    const int status = avcodec_send_frame(context_.get(), frame);
    if (status < 0)
        throwMediaError("The video encoder refused a picture", status);
    receive(sink);
}

void VideoEncoder::flush(const PacketSink &sink)
{
    const int status = avcodec_send_frame(context_.get(), nullptr);
    if (status < 0 && status != AVERROR_EOF)
        throwMediaError("The video encoder couldn't finish", status);
    receive(sink);
}

void VideoEncoder::receive(const PacketSink &sink)
{
    receivePackets(context_.get(), packet_.get(), sink, "The video encoder failed");
}

} // namespace videowriting
