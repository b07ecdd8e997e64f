#include "XvfbServer.h"

#include <QStandardPaths>

#include <cerrno>
#include <fcntl.h>
#include <csignal>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

QString XvfbServer::executable() { return QStandardPaths::findExecutable(QStringLiteral("Xvfb")); }

XvfbServer::XvfbServer(QSize size, int depth)
{
    const QString program = executable();
    if (program.isEmpty()) {
        m_reason = QStringLiteral("Xvfb is not installed (Debian package xvfb)");
        return;
    }
    int fds[2];
    if (pipe(fds) != 0) {
        m_reason = QStringLiteral("no pipe for -displayfd");
        return;
    }
    const QByteArray path = program.toLocal8Bit();
    const QByteArray fd = QByteArray::number(fds[1]);
    const QByteArray screen = QByteArray::number(size.width()) + 'x' + QByteArray::number(size.height()) + 'x'
        + QByteArray::number(depth);
    const char *argv[] = {path.constData(), "-displayfd", fd.constData(), "-screen", "0", screen.constData(),
                          "-nolisten", "tcp", "-noreset", nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    const int spawned = posix_spawn(&m_pid, path.constData(), &actions, nullptr, const_cast<char **>(argv), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    if (spawned != 0) {
        close(fds[0]);
        m_pid = -1;
        m_reason = QStringLiteral("Xvfb did not start");
        return;
    }
    // Xvfb writes its display number once it accepts connections.
    QByteArray number;
    pollfd waiter{fds[0], POLLIN, 0};
    while (!number.endsWith('\n')) {
        const int ready = poll(&waiter, 1, 20000);
        if (ready <= 0)
            break;
        char buffer[16];
        const ssize_t n = read(fds[0], buffer, sizeof buffer);
        if (n <= 0)
            break;
        number.append(buffer, n);
    }
    close(fds[0]);
    if (!number.endsWith('\n')) {
        m_reason = QStringLiteral("Xvfb gave no display number");
        return;
    }
    m_display = ':' + number.trimmed();
}

XvfbServer::~XvfbServer()
{
    if (m_pid > 0) {
        kill(m_pid, SIGTERM);
        int status = 0;
        waitpid(m_pid, &status, 0);
    }
}
