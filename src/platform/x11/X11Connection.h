#pragma once

#include <QByteArray>

struct xcb_connection_t;

// A connection of our own to the X server, opened on first use and opened
// again when the server dropped it (a restart of the session's X server must
// not leave glimpso with a dead handle for the rest of its life).
class X11Connection
{
public:
    explicit X11Connection(QByteArray displayName = {});
    ~X11Connection();
    X11Connection(const X11Connection &) = delete;
    X11Connection &operator=(const X11Connection &) = delete;

    // The live connection, or null when the server cannot be reached.
    xcb_connection_t *get();
    // Counts the connections made so far: whatever the server was told on an
    // earlier one (attached memory, resources) is gone when this changes.
    quint64 generation() const { return m_generation; }

private:
    QByteArray m_displayName;
    xcb_connection_t *m_connection = nullptr;
    quint64 m_generation = 0;
};
