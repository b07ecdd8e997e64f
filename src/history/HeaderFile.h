#pragma once

#include <QString>

// A capture file opened for reading its header only. The kernel is told that
// reads will be scattered, so it fetches just the pages asked for instead of
// reading ahead: on a cold cache a listing would otherwise pull most of every
// small capture from the disk to learn a few bytes of each.
class HeaderFile
{
public:
    explicit HeaderFile(const QString &path);
    ~HeaderFile();
    HeaderFile(const HeaderFile &) = delete;
    HeaderFile &operator=(const HeaderFile &) = delete;

    bool isOpen() const { return m_fd >= 0; }
    int descriptor() const { return m_fd; }
    qint64 size() const { return m_size; }

    // Reads at `offset` without moving any position; the count read, or -1.
    qint64 readAt(qint64 offset, void *buffer, qint64 length) const;

    // The stream interface the C readers want: a position, reads from it, seeks.
    qint64 position() const { return m_position; }
    qint64 read(void *buffer, qint64 length);
    bool seek(qint64 position);

private:
    int m_fd = -1;
    qint64 m_size = 0;
    qint64 m_position = 0;
};
