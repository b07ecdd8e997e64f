#pragma once

#include <QString>
#include <stdexcept>

namespace glimpso::cloud {

// A failure below HTTP: no connection, a request that made no progress within
// its time-out, a file that could not be read. It passes up as it is, with
// the network layer's own text.
class TransportError : public std::runtime_error
{
public:
    TransportError(const QString &text, bool timedOut = false)
        : std::runtime_error(text.toStdString())
        , m_text(text)
        , m_timedOut(timedOut)
    { }
    const QString &text() const { return m_text; }
    bool timedOut() const { return m_timedOut; }

private:
    QString m_text;
    bool m_timedOut;
};

} // namespace glimpso::cloud
