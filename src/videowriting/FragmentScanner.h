#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>

namespace videowriting {

// Finds how much of a fragmented MP4 can be read back: the file's top-level
// boxes are walked from the start (ftyp, moov, then moof and mdat pairs, the
// index at the end of a finished file), and the readable part ends after the
// last fragment whose moof and mdat are both whole. A file cut off by a crash
// ends in a fragment half written, or in the middle of a box header; that tail
// is left out. Only box headers are read, so a file of any size is quick.
class FragmentScanner {
public:
    struct Layout {
        // Bytes from the start that hold whole boxes up to the last whole
        // fragment; 0 when there is no whole movie header.
        std::uint64_t readable = 0;
        // Whole fragments (moof with its mdat) in that part.
        std::int64_t fragments = 0;
        // The file was finished: its last box is the index of the fragments
        // (mfra), which is written last.
        bool finished = false;
        friend bool operator==(const Layout &, const Layout &) = default;
    };

    // Reads `out.size()` bytes at `offset`; false if it can't.
    using ReadAt = std::function<bool(std::uint64_t offset, std::span<std::uint8_t> out)>;

    static Layout scan(const ReadAt &read, std::uint64_t size);
    static Layout scan(std::span<const std::uint8_t> bytes);
    // Absent when the file can't be opened or read.
    static std::optional<Layout> scanFile(const std::filesystem::path &path);
};

} // namespace videowriting
