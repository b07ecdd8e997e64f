#include "videowriting/FFmpegVideoWriter.h"

#include "videowriting/EncodingPipeline.h"
#include "videowriting/MediaClock.h"
#include "videowriting/PictureConverter.h"
#include "videowriting/WriterLog.h"

#include <algorithm>
#include <cstring>

namespace videowriting {

// What the writer's thread is given to do.
struct FFmpegVideoWriter::Job {
    enum class Kind { picture, sound, end };
    Kind kind = Kind::picture;
    double seconds = 0;
    // Picture: the areas to convert, and their pixels, either copied into
    // `pixels` (each area's rows packed, one area after the other) or kept in
    // the caller's frame (`bgra`, rows `bytesPerLine` apart).
    std::vector<PixelRect> rects;
    std::vector<std::uint8_t> pixels;
    const std::uint8_t *bgra = nullptr;
    int bytesPerLine = 0;
    std::shared_ptr<const void> keepAlive;
    // Sound.
    std::vector<float> samples;
    int channels = 0;
    int sampleRate = 0;
    bool microphone = false;
    // End: keep the file, or not.
    bool discard = false;
};

namespace {

// Areas beyond this many are converted as their bounding box: a picture of
// scattered small changes costs one pass instead of hundreds of small ones.
constexpr std::size_t maxRects = 64;

PixelRect bounds(const std::vector<PixelRect> &rects)
{
    int x0 = rects.front().x, y0 = rects.front().y;
    int x1 = x0 + rects.front().width, y1 = y0 + rects.front().height;
    for (const PixelRect &r : rects) {
        x0 = std::min(x0, r.x);
        y0 = std::min(y0, r.y);
        x1 = std::max(x1, r.x + r.width);
        y1 = std::max(y1, r.y + r.height);
    }
    return {x0, y0, x1 - x0, y1 - y0};
}

} // namespace

FFmpegVideoWriter::FFmpegVideoWriter(std::filesystem::path url, const Options &options)
    : FFmpegVideoWriter(std::move(url), options, Tuning{})
{
}

FFmpegVideoWriter::FFmpegVideoWriter(std::filesystem::path url, const Options &options, Tuning tuning)
    : url_(std::move(url)), options_(options), tuning_(std::move(tuning))
{
    if (options.width < 1 || options.height < 1 || options.framesPerSecond < 1)
        throw WriterError::cannotAddInput("video");
    pipeline_ = std::make_unique<EncodingPipeline>(url_, options_, tuning_.fragmentSeconds);
    width_ = pipeline_->width();
    height_ = pipeline_->height();
    systemTrack_ = pipeline_->hasTrack(EncodingPipeline::Track::system) ? 1 : -1;
    microphoneTrack_ = pipeline_->hasTrack(EncodingPipeline::Track::microphone) ? 1 : -1;
    worker_ = std::thread([this] { work(); });
}

FFmpegVideoWriter::~FFmpegVideoWriter()
{
    bool started = false;
    double end = 0;
    {
        std::lock_guard guard(lock_);
        started = started_;
        end = lastSeconds_;
    }
    if (!started) {
        cancel();
        return;
    }
    try {
        finish(end);
    } catch (const std::exception &error) {
        WriterLog::error(std::string("a recording ended without finishing: ") + error.what());
    }
}

const std::string &FFmpegVideoWriter::encoderName() const
{
    return pipeline_->encoderName();
}

void FFmpegVideoWriter::append(const VideoFrame &frame)
{
    std::lock_guard guard(lock_);
    if (finished_)
        return;
    if (failure_ || (started_ && frame.seconds <= lastSeconds_) || frame.width < 2 || frame.height < 2 ||
        pendingPictures_ >= tuning_.maxPendingFrames) {
        ++stats_.droppedFrames;
        return;
    }
    enqueuePicture(frame);
}

// Under lock_.
void FFmpegVideoWriter::enqueuePicture(const VideoFrame &frame)
{
    Job job;
    job.kind = Job::Kind::picture;
    job.seconds = frame.seconds;
    const int width = std::min(width_, VideoWriter::encodedSide(frame.width));
    const int height = std::min(height_, VideoWriter::encodedSide(frame.height));
    const bool whole = !started_ || !frame.changedRects;
    if (whole) {
        job.rects.push_back({0, 0, width, height});
    } else {
        for (const PixelRect &rect : *frame.changedRects) {
            const PixelRect area = PictureConverter::evenArea(rect, width, height);
            if (area.width > 0 && area.height > 0)
                job.rects.push_back(area);
        }
        if (job.rects.size() > maxRects)
            job.rects = {PictureConverter::evenArea(bounds(job.rects), width, height)};
    }
    std::size_t bytes = 0;
    if (!job.rects.empty() && frame.keepAlive) {
        job.bgra = frame.bgra;
        job.bytesPerLine = frame.bytesPerLine;
        job.keepAlive = frame.keepAlive;
    } else if (!job.rects.empty()) {
        for (const PixelRect &r : job.rects)
            bytes += std::size_t(r.width) * std::size_t(r.height) * 4;
        const std::size_t budget =
            std::size_t(tuning_.maxPendingWholeFrames) * std::size_t(width_) * std::size_t(height_) * 4;
        if (pendingBytes_ + bytes > budget && pendingPictures_ > 0) {
            ++stats_.droppedFrames;
            return;
        }
        if (!spareBuffers_.empty()) {
            job.pixels = std::move(spareBuffers_.back());
            spareBuffers_.pop_back();
        }
        job.pixels.resize(bytes);
        std::uint8_t *to = job.pixels.data();
        for (const PixelRect &r : job.rects) {
            const std::size_t row = std::size_t(r.width) * 4;
            for (int y = 0; y < r.height; ++y, to += row)
                std::memcpy(to, frame.bgra + std::ptrdiff_t(r.y + y) * frame.bytesPerLine + std::ptrdiff_t(r.x) * 4,
                            row);
        }
    }
    started_ = true;
    lastSeconds_ = frame.seconds;
    lastAppendClock_ = MediaClock::now();
    pendingBytes_ += bytes;
    ++pendingPictures_;
    ++stats_.videoFrames;
    jobs_.push_back(std::move(job));
    wake_.notify_one();
}

void FFmpegVideoWriter::appendAudio(const SoundChunk &chunk, bool fromMicrophone)
{
    std::lock_guard guard(lock_);
    if (!started_ || finished_ || failure_)
        return;
    if ((fromMicrophone ? microphoneTrack_ : systemTrack_) < 0 || chunk.frames() <= 0)
        return;
    std::int64_t &pending = pendingSound_[fromMicrophone ? 1 : 0];
    if (double(pending) > tuning_.maxPendingSoundSeconds * chunk.sampleRate)
        return;
    Job job;
    job.kind = Job::Kind::sound;
    job.seconds = chunk.seconds;
    job.samples.assign(chunk.samples.begin(), chunk.samples.end());
    job.channels = chunk.channels;
    job.sampleRate = chunk.sampleRate;
    job.microphone = fromMicrophone;
    pending += chunk.frames();
    jobs_.push_back(std::move(job));
    wake_.notify_one();
}

VideoWriter::Stats FFmpegVideoWriter::finish(double endTime)
{
    {
        std::lock_guard guard(lock_);
        if (finished_)
            return stats_;
        finished_ = true;
        if (started_) {
            Job end;
            end.kind = Job::Kind::end;
            end.seconds = endTime;
            jobs_.push_back(std::move(end));
            wake_.notify_one();
        }
    }
    bool started = false;
    {
        std::lock_guard guard(lock_);
        started = started_;
    }
    if (!started) {
        stopWorker();
        std::error_code ignored;
        std::filesystem::remove(url_, ignored);
        throw WriterError::noFrames();
    }
    if (worker_.joinable())
        worker_.join();
    std::lock_guard guard(lock_);
    if (failure_)
        std::rethrow_exception(failure_);
    return stats_;
}

void FFmpegVideoWriter::cancel()
{
    {
        std::lock_guard guard(lock_);
        if (finished_)
            return;
        finished_ = true;
    }
    stopWorker();
    std::error_code ignored;
    std::filesystem::remove(url_, ignored);
}

void FFmpegVideoWriter::stopWorker()
{
    {
        std::lock_guard guard(lock_);
        jobs_.clear();
        Job end;
        end.kind = Job::Kind::end;
        end.discard = true;
        jobs_.push_back(std::move(end));
        wake_.notify_one();
    }
    if (worker_.joinable())
        worker_.join();
}

void FFmpegVideoWriter::work()
{
    for (;;) {
        Job job;
        bool skip = false;
        {
            std::unique_lock guard(lock_);
            // While no frame comes (nothing changes on screen), the picture
            // that stands is repeated at the frame times gone by since the
            // last frame, a quarter second behind, so that a frame on its way
            // is never overtaken.
            while (jobs_.empty()) {
                if (wake_.wait_for(guard, std::chrono::milliseconds(100)) == std::cv_status::timeout && started_ &&
                    !failure_ && jobs_.empty()) {
                    const double until = lastSeconds_ + (MediaClock::now() - lastAppendClock_) - repeatDelay;
                    guard.unlock();
                    repeat(until);
                    guard.lock();
                }
            }
            job = std::move(jobs_.front());
            jobs_.pop_front();
            skip = failure_ && job.kind != Job::Kind::end;
        }
        if (!skip) {
            try {
                run(job);
            } catch (...) {
                std::lock_guard guard(lock_);
                if (!failure_)
                    failure_ = std::current_exception();
            }
        }
        if (job.kind == Job::Kind::end)
            return;
        done(job);
    }
}

void FFmpegVideoWriter::repeat(double until)
{
    try {
        pipeline_->repeatUntil(until);
    } catch (...) {
        std::lock_guard guard(lock_);
        if (!failure_)
            failure_ = std::current_exception();
    }
}

// Where each area's pixels are.
std::vector<EncodingPipeline::Patch> FFmpegVideoWriter::patches(const Job &job)
{
    std::vector<EncodingPipeline::Patch> list;
    const std::uint8_t *packed = job.pixels.data();
    for (const PixelRect &r : job.rects) {
        if (job.bgra) {
            list.push_back({r, job.bgra + std::ptrdiff_t(r.y) * job.bytesPerLine + std::ptrdiff_t(r.x) * 4,
                            job.bytesPerLine});
        } else {
            list.push_back({r, packed, r.width * 4});
            packed += std::size_t(r.width) * std::size_t(r.height) * 4;
        }
    }
    return list;
}

// On the writer's thread.
void FFmpegVideoWriter::run(Job &job)
{
    switch (job.kind) {
    case Job::Kind::picture:
        if (tuning_.beforePicture)
            tuning_.beforePicture();
        pipeline_->picture(patches(job), job.seconds);
        break;
    case Job::Kind::sound:
        pipeline_->sound(SoundChunk{job.samples, job.channels, job.sampleRate, job.seconds},
                         job.microphone ? EncodingPipeline::Track::microphone : EncodingPipeline::Track::system);
        break;
    case Job::Kind::end: {
        bool failed = false;
        {
            std::lock_guard guard(lock_);
            failed = bool(failure_);
        }
        if (job.discard || failed)
            pipeline_->abandon();
        else
            pipeline_->end(job.seconds);
        break;
    }
    }
}

// A job is through: its place in the queue is free again.
void FFmpegVideoWriter::done(Job &job)
{
    std::lock_guard guard(lock_);
    if (job.kind == Job::Kind::picture) {
        --pendingPictures_;
        pendingBytes_ -= job.pixels.size();
        if (job.pixels.capacity() > 0 && spareBuffers_.size() < 2)
            spareBuffers_.push_back(std::move(job.pixels));
    } else if (job.kind == Job::Kind::sound) {
        pendingSound_[job.microphone ? 1 : 0] -= std::int64_t(job.samples.size()) / std::max(job.channels, 1);
    }
}

} // namespace videowriting
