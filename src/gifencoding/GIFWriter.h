#pragma once

#include "gifencoding/Image.h"
#include "gifencoding/WorkQueue.h"

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <semaphore>
#include <span>
#include <vector>

namespace gifencoding {

// Streams an animated GIF to a file while frames are still arriving. Frames are
// coded in parallel, each into a one-image GIF in memory; the writer cuts the
// image block out of it, puts it back in order, and writes it with its delay as
// soon as the next frame's time is known. A bounded number of frames is in
// flight, so memory stays the same however long the recording runs; a caller
// that offers frames faster than they can be coded sees them refused, never
// waits.
//
// `add` and `addRegion` are called from one thread at a time; `finish` from any
// thread that may block.
class GIFWriter {
public:
    struct Stats {
        // Frame records that reached the file.
        std::int64_t framesWritten = 0;
        // Frames refused for want of a free slot.
        std::int64_t framesDropped = 0;
        // Graphic control blocks plus image blocks written; header and trailer not counted.
        std::int64_t bytes = 0;
        friend bool operator==(const Stats &, const Stats &) = default;
    };

    // Codes one picture as a complete one-image GIF file; absent on failure.
    using FrameCoder = std::function<std::optional<std::vector<std::uint8_t>>(const Image &)>;

    // Creates (or replaces) the file and writes the header; throws
    // std::system_error if that fails. `maxPending` is the number of frames
    // that may be in flight beyond the first. Without a coder, frames are coded
    // with OneImageGIFCoder's live settings.
    GIFWriter(const std::filesystem::path &url, int width, int height, int maxPending,
              FrameCoder coder = {});
    // Waits for frames still being coded; without `finish` the file has no trailer.
    ~GIFWriter();
    GIFWriter(const GIFWriter &) = delete;
    GIFWriter &operator=(const GIFWriter &) = delete;

    // A whole frame, or with `changed` the part of it that changed since the
    // previous frame (image pixels, top-left origin). Time in seconds. False if
    // the frame was refused: its time does not advance, or no slot is free.
    bool add(const Image &image, double time, std::optional<Rect> changed = std::nullopt);
    // A picture that is already only the changed part, and where it goes.
    bool addRegion(const Image &image, int x, int y, double time);
    // Waits until every accepted frame is coded and written, then ends the
    // file: the last frame lasts until `endTime` (at least 0.02 s). A second
    // call does nothing and returns zeros. Throws std::system_error if the last
    // frame, the trailer or the close cannot be written.
    Stats finish(double endTime);

    // The image block of a one-image GIF, placed at (left, top), with its
    // palette as a local table; absent if the bytes hold no such image.
    static std::optional<std::vector<std::uint8_t>> imageBlock(std::span<const std::uint8_t> gif,
                                                               int left, int top);

private:
    struct EncodedFrame {
        std::int64_t index = 0;
        double time = 0;
        std::optional<std::vector<std::uint8_t>> block;
    };
    struct Job {
        Image image;
        PixelRect rect;
        std::int64_t index = 0;
        double time = 0;
        bool isFirst = false;
        bool skipIfEmpty = false;
    };

    bool accept(double time, std::int64_t &index, bool &isFirst);
    void enqueue(Job job);
    void code(const Job &job);
    void file(EncodedFrame frame, bool isFirst);
    void drain();
    void write(const EncodedFrame &frame, double until);
    void writeAll(std::span<const std::uint8_t> bytes);
    void closeFile();
    void enterGroup();
    void leaveGroup();
    void waitForGroup();

    int fd_ = -1;
    int width_ = 0;
    int height_ = 0;
    FrameCoder coder_;
    std::counting_semaphore<> slots_;

    std::mutex groupMutex_;
    std::condition_variable groupEmpty_;
    std::int64_t groupCount_ = 0;

    // Write queue state.
    std::int64_t nextToWrite_ = 0;
    std::map<std::int64_t, EncodedFrame> encoded_;
    std::optional<EncodedFrame> pending_;
    double roundingError_ = 0;
    Stats stats_;
    bool finished_ = false;

    // Caller state.
    std::int64_t nextIndex_ = 0;
    std::optional<double> lastTime_;

    // Declared last: destroyed first, so no job outlives the state above.
    WorkQueue writeQueue_{1};
    WorkQueue encodeQueue_;
};

} // namespace gifencoding
