#include "platform/x11/HugePageImage.h"

#include <sys/mman.h>

#include <cstdint>

namespace {

constexpr std::size_t hugePage = std::size_t(2) << 20;

struct Mapping {
    void *address;
    std::size_t bytes;
};

// `bytes` rounded up to whole huge pages, starting on a huge page's edge: the
// kernel only backs whole, aligned huge pages.
void *mapAligned(std::size_t bytes)
{
    const std::size_t slack = hugePage;
    void *raw = mmap(nullptr, bytes + slack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED)
        return nullptr;
    const auto start = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t aligned = (start + hugePage - 1) & ~(hugePage - 1);
    // Only whole pages of the slack go back: the head up to the edge, and what
    // lies past the rounded size.
    if (aligned > start)
        munmap(raw, aligned - start);
    const std::uintptr_t end = start + bytes + slack;
    if (end > aligned + bytes)
        munmap(reinterpret_cast<void *>(aligned + bytes), end - (aligned + bytes));
    return reinterpret_cast<void *>(aligned);
}

} // namespace

QImage HugePageImage::allocate(QSize size, QImage::Format format)
{
    const qsizetype bytesPerLine = qsizetype(size.width()) * 4;
    const std::size_t used = std::size_t(bytesPerLine) * std::size_t(qMax(0, size.height()));
    // A picture smaller than one huge page would take a whole one.
    if (used < hugePage || QImage::toPixelFormat(format).bitsPerPixel() != 32)
        return QImage(size, format);
    const std::size_t bytes = (used + hugePage - 1) & ~(hugePage - 1);
    void *address = mapAligned(bytes);
    if (!address)
        return QImage(size, format);
    // Only a hint: with huge pages switched off the memory is ordinary pages.
    madvise(address, bytes, MADV_HUGEPAGE);
    auto *mapping = new Mapping{address, bytes};
    QImage image(static_cast<uchar *>(address), size.width(), size.height(), bytesPerLine, format,
                 [](void *info) {
                     auto *m = static_cast<Mapping *>(info);
                     munmap(m->address, m->bytes);
                     delete m;
                 },
                 mapping);
    if (image.isNull()) {
        munmap(address, bytes);
        delete mapping;
        return QImage(size, format);
    }
    return image;
}
