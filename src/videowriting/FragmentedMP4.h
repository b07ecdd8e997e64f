#pragma once

#include "videowriting/MediaHandles.h"

#include <filesystem>

namespace videowriting {

// The MP4 file of a recording, written in fragments: an empty movie header
// first, then each fragment (moof and mdat) as soon as the writer cuts it, each
// written through to the file at once. What the process has handed to the
// kernel survives the process, so a kill leaves every whole fragment readable.
class FragmentedMP4 {
public:
    // Opens nothing yet: tracks are added first.
    explicit FragmentedMP4(std::filesystem::path path);
    // Without `finish` the file is closed as it is: readable up to its last
    // whole fragment.
    ~FragmentedMP4();
    FragmentedMP4(const FragmentedMP4 &) = delete;
    FragmentedMP4 &operator=(const FragmentedMP4 &) = delete;

    // A track for what `encoder` produces; its index.
    int addTrack(const AVCodecContext *encoder);
    // Creates the file and writes the header.
    void begin();
    // `packet` in `timeBase` (the encoder's), for `track`; taken over.
    void write(AVPacket *packet, int track, AVRational timeBase);
    // Ends the fragment being filled and writes it out.
    void cutFragment();
    // The last fragment, the index and the close.
    void finish();
    // Closes at once, without the rest; the file is left as it is.
    void abandon();

    bool begun() const { return begun_; }

private:
    void close();

    std::filesystem::path path_;
    AVFormatContext *context_ = nullptr;
    bool begun_ = false;
    bool pendingData_ = false;
};

} // namespace videowriting
