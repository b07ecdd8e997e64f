#include "videowriting/FragmentScanner.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace videowriting {

namespace {

std::uint32_t bigEndian32(const std::uint8_t *p)
{
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) | p[3];
}

std::uint64_t bigEndian64(const std::uint8_t *p)
{
    return (std::uint64_t(bigEndian32(p)) << 32) | bigEndian32(p + 4);
}

bool isType(const std::uint8_t *type, const char (&name)[5])
{
    return std::memcmp(type, name, 4) == 0;
}

} // namespace

FragmentScanner::Layout FragmentScanner::scan(const ReadAt &read, std::uint64_t size)
{
    Layout layout;
    std::uint64_t offset = 0;
    bool movie = false;
    bool fragmentOpen = false;   // a moof seen, its mdat not yet
    while (offset < size) {
        std::array<std::uint8_t, 16> header{};
        if (size - offset < 8 || !read(offset, std::span(header.data(), 8)))
            return layout;
        std::uint64_t boxSize = bigEndian32(header.data());
        const std::uint8_t *type = header.data() + 4;
        if (boxSize == 1) {
            if (size - offset < 16 || !read(offset + 8, std::span(header.data() + 8, 8)))
                return layout;
            boxSize = bigEndian64(header.data() + 8);
            if (boxSize < 16)
                return layout;
        } else if (boxSize == 0) {
            // "To the end of the file": only whole if nothing was cut, which
            // can't be told; such a box is not trusted.
            return layout;
        } else if (boxSize < 8) {
            return layout;
        }
        if (boxSize > size - offset)
            return layout;   // cut off inside this box
        const std::uint64_t next = offset + boxSize;
        if (isType(type, "moov")) {
            movie = true;
            layout.readable = next;
        } else if (isType(type, "moof")) {
            fragmentOpen = true;
        } else if (isType(type, "mdat")) {
            if (fragmentOpen && movie) {
                ++layout.fragments;
                layout.readable = next;
            }
            fragmentOpen = false;
        } else if (isType(type, "mfra")) {
            if (movie && !fragmentOpen) {
                layout.readable = next;
                layout.finished = next == size;
            }
        } else if (movie && !fragmentOpen) {
            // Boxes between fragments (an index, free space) are whole and kept.
            layout.readable = next;
        }
        offset = next;
    }
    if (!movie)
        layout.readable = 0;
    return layout;
}

FragmentScanner::Layout FragmentScanner::scan(std::span<const std::uint8_t> bytes)
{
    return scan(
        [bytes](std::uint64_t offset, std::span<std::uint8_t> out) {
            if (offset > bytes.size() || out.size() > bytes.size() - offset)
                return false;
            std::memcpy(out.data(), bytes.data() + offset, out.size());
            return true;
        },
        bytes.size());
}

std::optional<FragmentScanner::Layout> FragmentScanner::scanFile(const std::filesystem::path &path)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        ::close(fd);
        return std::nullopt;
    }
    bool failed = false;
    const Layout layout = scan(
        [fd, &failed](std::uint64_t offset, std::span<std::uint8_t> out) {
            const ssize_t got = ::pread(fd, out.data(), out.size(), off_t(offset));
            if (got != ssize_t(out.size())) {
                failed = got < 0;
                return false;
            }
            return true;
        },
        std::uint64_t(info.st_size));
    ::close(fd);
    if (failed)
        return std::nullopt;
    return layout;
}

} // namespace videowriting
