// glimpso-gifbench: decodes a video with FFmpeg's libraries and feeds its
// frames to GIFWriter at a given rate, either cut to the rectangle that
// changed since the last frame the writer took (as the recorder does with the
// display server's damage) or whole. Prints one line of figures.
//
//   glimpso-gifbench --input VIDEO --fps N --out FILE [--whole-frames] [--realtime]
//                    [--speed 1..10] [--dither 0..1] [--quality 0..100]   (the coder's settings, for tuning)
//                    [--decode-only]   (everything but the writer: the baseline of the figures)
//
// By default a refused frame is offered again after 2 ms, as a conversion
// does, so the figures measure throughput. With --realtime frames are offered
// on the wall clock at the given rate and a refused frame is dropped, as in a
// live recording.

#include "gifencoding/GIFWriter.h"
#include "gifencoding/OneImageGIFCoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

using gifencoding::GIFWriter;
using gifencoding::Image;
using gifencoding::PixelRect;

namespace {

struct Options {
    std::string input;
    std::string out;
    double fps = 15;
    bool wholeFrames = false;
    bool realtime = false;
    bool decodeOnly = false;
    gifencoding::OneImageGIFCoder::Settings coder = gifencoding::OneImageGIFCoder::liveSettings();
};

Options parse(int argc, char **argv)
{
    Options o;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc)
                throw std::runtime_error(a + " needs a value");
            return argv[++i];
        };
        if (a == "--input")
            o.input = value();
        else if (a == "--out")
            o.out = value();
        else if (a == "--fps")
            o.fps = std::stod(value());
        else if (a == "--whole-frames")
            o.wholeFrames = true;
        else if (a == "--realtime")
            o.realtime = true;
        else if (a == "--decode-only")
            o.decodeOnly = true;
        else if (a == "--speed")
            o.coder.speed = std::stoi(value());
        else if (a == "--dither")
            o.coder.ditheringLevel = std::stof(value());
        else if (a == "--quality")
            o.coder.maxQuality = std::stoi(value());
        else
            throw std::runtime_error("unknown option " + a);
    }
    if (o.input.empty() || o.out.empty() || o.fps <= 0)
        throw std::runtime_error("usage: glimpso-gifbench --input VIDEO --fps N --out FILE [--whole-frames] [--realtime]");
    return o;
}

struct FormatCloser {
    void operator()(AVFormatContext *c) const { avformat_close_input(&c); }
};
struct CodecFreer {
    void operator()(AVCodecContext *c) const { avcodec_free_context(&c); }
};
struct FrameFreer {
    void operator()(AVFrame *f) const { av_frame_free(&f); }
};
struct PacketFreer {
    void operator()(AVPacket *p) const { av_packet_free(&p); }
};
struct ScaleFreer {
    void operator()(SwsContext *s) const { sws_freeContext(s); }
};

// The smallest rectangle holding every pixel that differs between two BGRA
// pictures of the same size; empty if none does.
PixelRect changedRect(const std::uint8_t *a, const std::uint8_t *b, int width, int height)
{
    const std::size_t line = std::size_t(width) * 4;
    int top = -1, bottom = -1, left = width, right = -1;
    for (int y = 0; y < height; ++y) {
        const auto *ra = reinterpret_cast<const std::uint32_t *>(a + y * line);
        const auto *rb = reinterpret_cast<const std::uint32_t *>(b + y * line);
        if (std::memcmp(ra, rb, line) == 0)
            continue;
        if (top < 0)
            top = y;
        bottom = y;
        int x = 0;
        while (x < left && ra[x] == rb[x])
            ++x;
        left = std::min(left, x);
        int r = width - 1;
        while (r > right && ra[r] == rb[r])
            --r;
        right = std::max(right, r);
    }
    if (top < 0)
        return {};
    return {left, top, right - left + 1, bottom - top + 1};
}

Image copyOf(const Image &image)
{
    std::vector<std::uint8_t> bytes(std::size_t(image.width()) * image.height() * 4);
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(&bytes[std::size_t(y) * image.width() * 4], image.line(y), std::size_t(image.width()) * 4);
    return Image::fromBGRA(std::move(bytes), image.width(), image.height());
}

// Reads and decodes the video, converting each frame to BGRA.
class VideoSource {
public:
    explicit VideoSource(const std::string &path)
    {
        AVFormatContext *raw = nullptr;
        if (avformat_open_input(&raw, path.c_str(), nullptr, nullptr) < 0)
            throw std::runtime_error("cannot open " + path);
        format_.reset(raw);
        if (avformat_find_stream_info(raw, nullptr) < 0)
            throw std::runtime_error("no stream info in " + path);
        const AVCodec *codec = nullptr;
        stream_ = av_find_best_stream(raw, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
        if (stream_ < 0 || !codec)
            throw std::runtime_error("no video stream in " + path);
        codec_.reset(avcodec_alloc_context3(codec));
        avcodec_parameters_to_context(codec_.get(), raw->streams[stream_]->codecpar);
        // One decoding thread per core, so that decoding, which stands in for
        // the display server handing frames over and is no work of the
        // writer's, keeps pace as ffmpeg's own decoding does for the peers.
        // Frame threads hold frames of their own; the decode-only run counts
        // them too, so the writer's share stays the difference of the two.
        // GIFBENCH_DECODE_THREADS overrides it (0: as many as the decoder likes).
        const char *threads = std::getenv("GIFBENCH_DECODE_THREADS");
        const int cores = int(std::max(1u, std::thread::hardware_concurrency()));
        codec_->thread_count = threads ? std::atoi(threads) : cores;
        if (avcodec_open2(codec_.get(), codec, nullptr) < 0)
            throw std::runtime_error("cannot open the decoder");
        timeBase_ = av_q2d(raw->streams[stream_]->time_base);
    }
    int width() const { return codec_->width; }
    int height() const { return codec_->height; }

    // The next frame as BGRA and its time in seconds from the first; false at the end.
    bool next(std::vector<std::uint8_t> &bgra, double &seconds)
    {
        while (true) {
            const int r = avcodec_receive_frame(codec_.get(), frame_.get());
            if (r == 0) {
                convert(bgra);
                const std::int64_t pts = frame_->best_effort_timestamp;
                if (!firstPts_)
                    firstPts_ = pts;
                seconds = double(pts - *firstPts_) * timeBase_;
                return true;
            }
            if (r == AVERROR_EOF)
                return false;
            if (flushed_)
                return false;
            if (av_read_frame(format_.get(), packet_.get()) < 0) {
                avcodec_send_packet(codec_.get(), nullptr);
                flushed_ = true;
                continue;
            }
            if (packet_->stream_index == stream_)
                avcodec_send_packet(codec_.get(), packet_.get());
            av_packet_unref(packet_.get());
        }
    }

private:
    void convert(std::vector<std::uint8_t> &bgra)
    {
        scale_.reset(sws_getCachedContext(scale_.release(), frame_->width, frame_->height,
                                          AVPixelFormat(frame_->format), width(), height(),
                                          AV_PIX_FMT_BGRA, SWS_POINT, nullptr, nullptr, nullptr));
        bgra.resize(std::size_t(width()) * height() * 4);
        std::uint8_t *planes[1] = {bgra.data()};
        const int strides[1] = {width() * 4};
        sws_scale(scale_.get(), frame_->data, frame_->linesize, 0, frame_->height, planes, strides);
    }

    std::unique_ptr<AVFormatContext, FormatCloser> format_;
    std::unique_ptr<AVCodecContext, CodecFreer> codec_;
    std::unique_ptr<AVFrame, FrameFreer> frame_{av_frame_alloc()};
    std::unique_ptr<AVPacket, PacketFreer> packet_{av_packet_alloc()};
    std::unique_ptr<SwsContext, ScaleFreer> scale_;
    int stream_ = -1;
    double timeBase_ = 0;
    std::optional<std::int64_t> firstPts_;
    bool flushed_ = false;
};

double cpuSeconds(const rusage &u)
{
    return double(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
           double(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

int run(const Options &o)
{
    const auto start = std::chrono::steady_clock::now();
    VideoSource video(o.input);
    const int w = video.width();
    const int h = video.height();
    const gifencoding::OneImageGIFCoder coder(o.coder);
    GIFWriter writer(o.out, w, h, 8, [&coder](const Image &i) { return coder.encode(i); });

    std::shared_ptr<const std::vector<std::uint8_t>> shown; // what the writer has last taken
    double lastTime = 0;
    std::int64_t offered = 0, skippedUnchanged = 0;
    const double step = 1.0 / o.fps;

    auto offer = [&](std::shared_ptr<const std::vector<std::uint8_t>> pixels, double time) {
        const Image image(pixels, pixels->data(), w, h, std::ptrdiff_t(w) * 4);
        PixelRect rect{0, 0, w, h};
        if (!o.wholeFrames && shown) {
            rect = changedRect(shown->data(), pixels->data(), w, h);
            if (rect.isEmpty()) {
                ++skippedUnchanged;
                return;
            }
        }
        // The recorder copies the changed area out of the capture buffer, so
        // a frame in flight holds only its own rectangle.
        const Image region = copyOf(*image.cropped(rect));
        if (o.decodeOnly) {
            shown = std::move(pixels);
            return;
        }
        if (o.realtime)
            std::this_thread::sleep_until(start + std::chrono::duration<double>(time));
        ++offered;
        bool accepted = writer.addRegion(region, rect.x, rect.y, time);
        while (!accepted && !o.realtime) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            accepted = writer.addRegion(region, rect.x, rect.y, time);
        }
        if (accepted) {
            shown = std::move(pixels);
            lastTime = time;
        }
    };

    // Frames are taken as ffmpeg's fps filter takes them: for each tick of
    // the output rate, the last source frame whose time rounds to that tick or
    // an earlier one, shown at the tick's time. So every coder in the
    // comparison sees the same frames at the same times.
    auto bgra = std::make_shared<std::vector<std::uint8_t>>();
    double seconds = 0;
    std::shared_ptr<const std::vector<std::uint8_t>> candidate;
    long long tick = 0;
    while (video.next(*bgra, seconds)) {
        const long long rounded = std::llround(seconds * o.fps);
        if (candidate && rounded > tick) {
            offer(std::move(candidate), double(tick) * step);
            tick = rounded;
        }
        if (!candidate && offered == 0 && !shown)
            tick = rounded;
        candidate = std::move(bgra);
        bgra = std::make_shared<std::vector<std::uint8_t>>();
    }
    if (candidate)
        offer(std::move(candidate), double(tick) * step);
    const auto stats = writer.finish(lastTime + step);
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const std::int64_t dropped = o.realtime ? stats.framesDropped : 0;
    std::printf("wall_s=%.2f cpu_s=%.2f peak_rss_mib=%.1f bytes=%lld frames=%lld dropped=%lld\n", wall,
                cpuSeconds(usage), double(usage.ru_maxrss) / 1024.0,
                static_cast<long long>(std::filesystem::file_size(o.out)),
                static_cast<long long>(stats.framesWritten), static_cast<long long>(dropped));
    std::fprintf(stderr, "offered=%lld unchanged=%lld refusals=%lld\n", static_cast<long long>(offered),
                 static_cast<long long>(skippedUnchanged), static_cast<long long>(stats.framesDropped));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(parse(argc, argv));
    } catch (const std::exception &e) {
        std::fprintf(stderr, "glimpso-gifbench: %s\n", e.what());
        return 1;
    }
}
