#include "history/HeaderFile.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

HeaderFile::HeaderFile(const QString &path)
{
    // Non-blocking, so that a pipe that took a capture's name between the
    // listing's look and this open can't hold the listing up.
    m_fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (m_fd < 0)
        return;
    struct stat facts {};
    if (::fstat(m_fd, &facts) != 0 || !S_ISREG(facts.st_mode)) {
        ::close(m_fd);
        m_fd = -1;
        return;
    }
    m_size = facts.st_size;
    ::posix_fadvise(m_fd, 0, 0, POSIX_FADV_RANDOM);
}

HeaderFile::~HeaderFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

qint64 HeaderFile::readAt(qint64 offset, void *buffer, qint64 length) const
{
    if (m_fd < 0 || offset < 0 || length < 0)
        return -1;
    qint64 done = 0;
    while (done < length) {
        const ssize_t n = ::pread(m_fd, static_cast<char *>(buffer) + done, size_t(length - done), off_t(offset + done));
        if (n < 0)
            return -1;
        if (n == 0)
            break;
        done += n;
    }
    return done;
}

qint64 HeaderFile::read(void *buffer, qint64 length)
{
    const qint64 n = readAt(m_position, buffer, length);
    if (n > 0)
        m_position += n;
    return n;
}

bool HeaderFile::seek(qint64 position)
{
    if (position < 0)
        return false;
    m_position = position;
    return true;
}
