#include "platform/x11/ShmSegmentPool.h"

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <sys/ipc.h>
#include <sys/shm.h>

#include <algorithm>
#include <cstdlib>

namespace {

// A block left unlent for this many loans is given up: room for one block per
// display on a desk of eight, and a block for a display that went away, or
// that shrank a lot, does not stay for good.
constexpr quint64 idleLends = 8;

} // namespace

// Our mapping of one block; unmapped when the pool and every picture on it
// have let go.
struct ShmSegmentPool::Memory {
    int id = -1;
    uchar *address = nullptr;
    std::size_t bytes = 0;
    ~Memory()
    {
        if (address)
            shmdt(address);
    }
};

// One picture's hold on a block; the block is lent while this lives.
struct ShmSegmentPool::Loan {
    std::shared_ptr<Memory> memory;
};

ShmSegmentPool::ShmSegmentPool() = default;

// The server lets go of every block when the connection closes; our mappings
// go with the last picture on each.
ShmSegmentPool::~ShmSegmentPool() = default;

std::shared_ptr<ShmSegmentPool::Memory> ShmSegmentPool::allocate(std::size_t bytes)
{
    const int id = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (id < 0)
        return nullptr;
    void *address = shmat(id, nullptr, 0);
    // Marked for removal at once: it goes when the last of us and the server
    // lets go of it, whatever happens later. Linux still lets the server attach
    // a block so marked while we hold it.
    shmctl(id, IPC_RMID, nullptr);
    if (address == reinterpret_cast<void *>(-1))
        return nullptr;
    auto memory = std::make_shared<Memory>();
    memory->id = id;
    memory->address = static_cast<uchar *>(address);
    memory->bytes = bytes;
    return memory;
}

bool ShmSegmentPool::attach(xcb_connection_t *c, quint64 generation, Block &block)
{
    if (block.generation == generation && block.segment != 0)
        return true;
    const xcb_shm_seg_t segment = xcb_generate_id(c);
    xcb_generic_error_t *error = xcb_request_check(c, xcb_shm_attach_checked(c, segment, std::uint32_t(block.memory->id), 0));
    if (error) {
        // A server on another machine cannot see our memory.
        std::free(error);
        block.segment = 0;
        return false;
    }
    block.segment = segment;
    block.generation = generation;
    return true;
}

void ShmSegmentPool::detach(xcb_connection_t *c, quint64 generation, const Block &block)
{
    if (block.segment != 0 && block.generation == generation)
        xcb_shm_detach(c, block.segment);
}

void ShmSegmentPool::dropIdle(xcb_connection_t *c, quint64 generation, std::size_t smallerThan)
{
    const auto idle = [&](const Block &block) {
        if (block.isLent())
            return false;
        return block.memory->bytes < smallerThan || block.lastLent + idleLends < m_lends;
    };
    for (const Block &block : m_blocks)
        if (idle(block))
            detach(c, generation, block);
    m_blocks.erase(std::remove_if(m_blocks.begin(), m_blocks.end(), idle), m_blocks.end());
}

void ShmSegmentPool::releaseFree(xcb_connection_t *c, quint64 generation)
{
    const auto free = [](const Block &block) { return !block.isLent(); };
    for (const Block &block : m_blocks)
        if (free(block))
            detach(c, generation, block);
    m_blocks.erase(std::remove_if(m_blocks.begin(), m_blocks.end(), free), m_blocks.end());
}

std::optional<ShmSegmentPool::Lease> ShmSegmentPool::lend(xcb_connection_t *c, quint64 generation, std::size_t bytes,
                                                          Making making)
{
    ++m_lends;
    // The snuggest free block, so a small display does not take the block of a
    // large one that the next request needs.
    Block *chosen = nullptr;
    for (Block &block : m_blocks) {
        const std::size_t size = block.memory->bytes;
        if (block.isLent() || size < bytes || size / 2 > bytes)
            continue;
        if (!chosen || size < chosen->memory->bytes)
            chosen = &block;
    }
    if (chosen && !attach(c, generation, *chosen))
        return std::nullopt;
    if (!chosen && making == Making::keptOnly)
        return std::nullopt;
    if (!chosen) {
        // Blocks too small for this display will not fit it later either: a
        // display that grew gets a new block and its old one goes now.
        dropIdle(c, generation, bytes);
        Block block;
        block.memory = allocate(bytes);
        if (!block.memory || !attach(c, generation, block))
            return std::nullopt;
        ++m_made;
        m_blocks.push_back(std::move(block));
        chosen = &m_blocks.back();
    }
    auto loan = std::make_shared<Loan>();
    loan->memory = chosen->memory;
    chosen->loan = loan;
    chosen->lastLent = m_lends;
    Lease lease{chosen->memory->address, bytes, chosen->segment, std::move(loan)};
    dropIdle(c, generation, 0);
    return lease;
}

QImage ShmSegmentPool::picture(const Lease &lease, QSize size, QImage::Format format)
{
    const qsizetype bytesPerLine = qsizetype(size.width()) * 4;
    auto *hold = new std::shared_ptr<Loan>(lease.loan);
    // The read-only form: QImage never writes into the block, it copies first.
    QImage image(static_cast<const uchar *>(lease.data), size.width(), size.height(), bytesPerLine, format,
                 [](void *info) { delete static_cast<std::shared_ptr<Loan> *>(info); }, hold);
    if (image.isNull())
        delete hold; // a picture that was never made never calls back
    return image;
}
