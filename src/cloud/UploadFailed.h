#pragma once

#include <QString>
#include <stdexcept>

namespace glimpso::cloud {

// An upload the server or the protocol refused, with the text the user is
// shown ("HTTP 403: Access Denied", "No upload id from the server", ...).
// The upload service hands it on as the application's upload failure.
class UploadFailed : public std::runtime_error
{
public:
    explicit UploadFailed(const QString &text)
        : std::runtime_error(text.toStdString())
        , m_text(text)
    { }
    const QString &text() const { return m_text; }

private:
    QString m_text;
};

} // namespace glimpso::cloud
