#include "gifencoding/GIFWriter.h"

#include "gifencoding/ImageBlock.h"
#include "gifencoding/OneImageGIFCoder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace gifencoding {

namespace {

constexpr std::uint8_t trailer = 0x3B;
// Many viewers treat a smaller delay as their default of a tenth of a second.
constexpr double leastDelayCentiseconds = 2;
constexpr double greatestDelayCentiseconds = 65535;

void appendLE16(std::vector<std::uint8_t> &out, int value)
{
    out.push_back(std::uint8_t(value & 0xFF));
    out.push_back(std::uint8_t((value >> 8) & 0xFF));
}

std::vector<std::uint8_t> header(int width, int height)
{
    std::vector<std::uint8_t> h = {'G', 'I', 'F', '8', '9', 'a'};
    appendLE16(h, width);
    appendLE16(h, height);
    // No global colour table, background 0, no aspect ratio.
    h.insert(h.end(), {0x00, 0x00, 0x00});
    // The NETSCAPE2.0 application block: loop for ever.
    h.insert(h.end(), {0x21, 0xFF, 0x0B, 'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0',
                       0x03, 0x01, 0x00, 0x00, 0x00});
    return h;
}

// Disposal 1 and no transparency: a partial frame paints its rectangle
// opaquely over the picture that stands, and the rest stays.
std::vector<std::uint8_t> frameRecord(int delayCentiseconds, std::span<const std::uint8_t> block)
{
    std::vector<std::uint8_t> record = {0x21, 0xF9, 0x04, 0x04};
    record.reserve(8 + block.size());
    appendLE16(record, delayCentiseconds);
    record.insert(record.end(), {0x00, 0x00});
    record.insert(record.end(), block.begin(), block.end());
    return record;
}

GIFWriter::FrameCoder liveCoder()
{
    return [coder = OneImageGIFCoder(OneImageGIFCoder::liveSettings())](const Image &image) {
        return coder.encode(image);
    };
}

unsigned encodeThreads()
{
    return std::max(1u, std::thread::hardware_concurrency());
}

} // namespace

GIFWriter::GIFWriter(const std::filesystem::path &url, int width, int height, int maxPending,
                     FrameCoder coder)
    : width_(width), height_(height), coder_(coder ? std::move(coder) : liveCoder()),
      slots_(std::max(maxPending, 0)), encodeQueue_(encodeThreads())
{
    fd_ = ::open(url.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd_ < 0)
        throw std::system_error(errno, std::generic_category(), "cannot create " + url.string());
    try {
        writeAll(header(width, height));
    } catch (...) {
        ::close(fd_);
        throw;
    }
}

GIFWriter::~GIFWriter()
{
    waitForGroup();
    writeQueue_.runAndWait([this] {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = -1;
    });
}

bool GIFWriter::accept(double time, std::int64_t &index, bool &isFirst)
{
    if (lastTime_ && *lastTime_ >= time)
        return false;
    isFirst = nextIndex_ == 0;
    // The first frame takes no slot, so it can never be refused.
    if (!isFirst && !slots_.try_acquire()) {
        writeQueue_.post([this] { ++stats_.framesDropped; });
        return false;
    }
    lastTime_ = time;
    index = nextIndex_++;
    return true;
}

bool GIFWriter::add(const Image &image, double time, std::optional<Rect> changed)
{
    std::int64_t index = 0;
    bool isFirst = false;
    if (!accept(time, index, isFirst))
        return false;
    const PixelRect screen{0, 0, width_, height_};
    // Nothing stands behind the first frame, so it is always whole.
    const PixelRect rect =
        (!isFirst && changed) ? intersection(integral(*changed), screen) : screen;
    enqueue(Job{image, rect, index, time, isFirst, true});
    return true;
}

bool GIFWriter::addRegion(const Image &image, int x, int y, double time)
{
    std::int64_t index = 0;
    bool isFirst = false;
    if (!accept(time, index, isFirst))
        return false;
    enqueue(Job{image, PixelRect{x, y, image.width(), image.height()}, index, time, isFirst, false});
    return true;
}

void GIFWriter::enqueue(Job job)
{
    enterGroup();
    encodeQueue_.post([this, job = std::move(job)] { code(job); });
}

void GIFWriter::code(const Job &job)
{
    std::optional<std::vector<std::uint8_t>> block;
    // An empty rectangle means nothing changed on screen: no block to paint.
    if (!(job.skipIfEmpty && job.rect.isEmpty())) {
        const std::optional<Image> part = job.skipIfEmpty
                                              ? job.image.cropped(job.rect)
                                              : std::optional<Image>(job.image);
        // A frame that cannot be coded simply does not appear.
        if (part && !part->isNull()) {
            if (const auto gif = coder_(*part))
                block = imageBlock(*gif, job.rect.x, job.rect.y);
        }
    }
    writeQueue_.post([this, frame = EncodedFrame{job.index, job.time, std::move(block)},
                      isFirst = job.isFirst]() mutable { file(std::move(frame), isFirst); });
}

void GIFWriter::file(EncodedFrame frame, bool isFirst)
{
    encoded_[frame.index] = std::move(frame);
    drain();
    if (!isFirst)
        slots_.release();
    leaveGroup();
}

void GIFWriter::drain()
{
    for (auto it = encoded_.find(nextToWrite_); it != encoded_.end();
         it = encoded_.find(nextToWrite_)) {
        EncodedFrame frame = std::move(it->second);
        encoded_.erase(it);
        ++nextToWrite_;
        // A frame with nothing to paint is forgotten: the one before it lasts longer.
        if (!frame.block)
            continue;
        if (pending_) {
            try {
                write(*pending_, frame.time);
            } catch (const std::system_error &) {
                // A frame lost to a full disk must not stop the stream; only the
                // stats show it, and finish reports errors at the end.
            }
        }
        pending_ = std::move(frame);
    }
}

void GIFWriter::write(const EncodedFrame &frame, double until)
{
    if (!frame.block)
        return;
    // The remainder of each rounding is carried to the next frame so that the
    // delays add up to the true duration; so is the debt of the 2-centisecond
    // floor, which later, longer frames pay off. The clamp is not carried.
    const double raw = (until - frame.time) * 100 + roundingError_;
    const double delay = std::max(std::round(raw), leastDelayCentiseconds);
    roundingError_ = raw - delay;
    const auto record =
        frameRecord(int(std::min(delay, greatestDelayCentiseconds)), *frame.block);
    writeAll(record);
    ++stats_.framesWritten;
    stats_.bytes += std::int64_t(record.size());
}

void GIFWriter::writeAll(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd_, bytes.data(), bytes.size());
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throw std::system_error(errno, std::generic_category(), "cannot write the GIF file");
        }
        bytes = bytes.subspan(std::size_t(n));
    }
}

void GIFWriter::closeFile()
{
    const int fd = fd_;
    fd_ = -1;
    if (::close(fd) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot close the GIF file");
}

GIFWriter::Stats GIFWriter::finish(double endTime)
{
    waitForGroup();
    Stats result;
    writeQueue_.runAndWait([this, endTime, &result] {
        if (finished_)
            return;
        finished_ = true;
        if (pending_) {
            write(*pending_, std::max(pending_->time + 0.02, endTime));
            pending_.reset();
        }
        const std::array<std::uint8_t, 1> end = {trailer};
        writeAll(end);
        closeFile();
        result = stats_;
    });
    return result;
}

std::optional<std::vector<std::uint8_t>> GIFWriter::imageBlock(std::span<const std::uint8_t> gif,
                                                               int left, int top)
{
    return ImageBlock::extract(gif, left, top);
}

void GIFWriter::enterGroup()
{
    std::lock_guard lock(groupMutex_);
    ++groupCount_;
}

void GIFWriter::leaveGroup()
{
    std::lock_guard lock(groupMutex_);
    if (--groupCount_ == 0)
        groupEmpty_.notify_all();
}

void GIFWriter::waitForGroup()
{
    std::unique_lock lock(groupMutex_);
    groupEmpty_.wait(lock, [this] { return groupCount_ == 0; });
}

} // namespace gifencoding
