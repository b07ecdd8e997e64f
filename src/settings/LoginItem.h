#pragma once

#include <QString>

// Whether glimpso starts with the desktop session. The desktop's own record is
// the truth; nothing about it is kept in the settings file.
class LoginItem
{
public:
    virtual ~LoginItem() = default;
    virtual bool isEnabled() const = 0;
    // Returns an empty text on success, else what went wrong.
    virtual QString setEnabled(bool enabled) = 0;
};
