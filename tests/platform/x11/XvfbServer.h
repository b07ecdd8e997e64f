#pragma once

#include <QByteArray>
#include <QSize>
#include <QString>

#include <sys/types.h>

// A private X server for one test: Xvfb on a display number it chooses itself
// (-displayfd), ended when the object goes.
class XvfbServer
{
public:
    explicit XvfbServer(QSize size, int depth = 24);
    ~XvfbServer();
    XvfbServer(const XvfbServer &) = delete;
    XvfbServer &operator=(const XvfbServer &) = delete;

    // Empty when Xvfb is missing; then reason() says why.
    bool isRunning() const { return !m_display.isEmpty(); }
    QString reason() const { return m_reason; }
    // ":N"
    QByteArray display() const { return m_display; }

    static QString executable();

private:
    pid_t m_pid = -1;
    QByteArray m_display;
    QString m_reason;
};
