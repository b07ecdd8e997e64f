#include "app/HangupNotifier.h"

#include <QLoggingCategory>
#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcHangup, "glimpso.HangupNotifier", QtInfoMsg)

namespace {

int g_fds[2] = { -1, -1 };

extern "C" void onSigHup(int)
{
    const char byte = 1;
    // Async-signal-safe; a full pipe means a wake-up is already pending.
    [[maybe_unused]] const ssize_t written = ::write(g_fds[0], &byte, 1);
}

} // namespace

HangupNotifier::HangupNotifier(QObject *parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, g_fds) != 0) {
        qCWarning(lcHangup, "no socket pair for SIGHUP; the settings file is read at start only");
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(g_fds[1], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &HangupNotifier::readSignal);
    struct sigaction action = {};
    action.sa_handler = onSigHup;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGHUP, &action, nullptr);
}

HangupNotifier::~HangupNotifier()
{
    if (g_fds[0] < 0)
        return;
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    ::sigaction(SIGHUP, &action, nullptr);
    m_notifier.reset();
    ::close(g_fds[0]);
    ::close(g_fds[1]);
    g_fds[0] = g_fds[1] = -1;
}

void HangupNotifier::readSignal()
{
    char bytes[64];
    while (::read(g_fds[1], bytes, sizeof bytes) > 0) { }
    if (onHangup)
        onHangup();
}
