#pragma once

#include <QString>
#include <QVariant>

// Where the settings live. An absent key must be told apart from a stored
// false or zero, because the load rules give those different answers.
class SettingsStorage
{
public:
    virtual ~SettingsStorage() = default;
    virtual bool contains(const QString &key) const = 0;
    virtual QVariant value(const QString &key) const = 0;
    virtual void setValue(const QString &key, const QVariant &value) = 0;
    virtual void remove(const QString &key) = 0;
    // Picks up what another program wrote to the store since it was read.
    virtual void reread() {}
};
