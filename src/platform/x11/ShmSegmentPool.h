#pragma once

#include <QImage>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

struct xcb_connection_t;

// Blocks of shared memory that the X server writes pictures into, kept from
// one capture to the next. A fresh block the size of a 4K screen costs more
// than the picture itself: each of its pages has to be found and cleared the
// first time the server writes it and mapped again the first time we read it.
// A kept block is mapped on both sides already.
//
// A block is lent for one picture and comes back when the last copy of that
// picture goes, on whatever thread that happens. Until then a capture gets
// another block, so a picture still on screen is never written over.
//
// Not thread-safe: the owner calls lend() and the counters under its own lock;
// only the giving back happens elsewhere, and it touches nothing here.
class ShmSegmentPool
{
    struct Memory;
    struct Loan;

public:
    // A block lent for one picture; holding it keeps the block lent.
    struct Lease {
        uchar *data = nullptr;
        std::size_t bytes = 0;
        // The server's name for the block on the connection it was lent for.
        std::uint32_t segment = 0;
        std::shared_ptr<Loan> loan;
    };

    ShmSegmentPool();
    ~ShmSegmentPool();
    ShmSegmentPool(const ShmSegmentPool &) = delete;
    ShmSegmentPool &operator=(const ShmSegmentPool &) = delete;

    // Whether a new block may be made when no kept one fits.
    enum class Making { allowed, keptOnly };

    // A free block of at least `bytes` and at most twice that, else a new one
    // (unless `making` is keptOnly), attached to the server on `c`;
    // `generation` tells a new connection from the one an older block was
    // attached on. Absent when the system gives no shared memory, the server
    // cannot attach ours (a remote server), or no kept block fits and none may
    // be made.
    std::optional<Lease> lend(xcb_connection_t *c, quint64 generation, std::size_t bytes,
                              Making making = Making::allowed);

    // The lent block as a read-only picture of `size` in `format`, rows
    // packed. The block comes back when the picture and all its copies are
    // gone; changing a copy gives that copy memory of its own first.
    static QImage picture(const Lease &lease, QSize size, QImage::Format format);

    // Lets go of every block not lent now, on both sides.
    void releaseFree(xcb_connection_t *c, quint64 generation);
    // Blocks kept now, lent or free.
    int blockCount() const { return int(m_blocks.size()); }
    // Blocks made since the start.
    int blocksMade() const { return m_made; }

private:
    struct Block {
        std::shared_ptr<Memory> memory;
        std::uint32_t segment = 0;
        quint64 generation = 0;
        quint64 lastLent = 0;
        std::weak_ptr<Loan> loan;
        bool isLent() const { return !loan.expired(); }
    };

    static std::shared_ptr<Memory> allocate(std::size_t bytes);
    static bool attach(xcb_connection_t *c, quint64 generation, Block &block);
    // Tells the server to let go of the block, when it still knows it.
    static void detach(xcb_connection_t *c, quint64 generation, const Block &block);
    void dropIdle(xcb_connection_t *c, quint64 generation, std::size_t smallerThan);

    std::vector<Block> m_blocks;
    quint64 m_lends = 0;
    int m_made = 0;
};
