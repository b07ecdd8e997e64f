#pragma once

#include "settings/LoginItem.h"

#include <QString>

// Start at login through the freedesktop autostart folder: the entry
// $XDG_CONFIG_HOME/autostart/glimpso.desktop exists exactly while the setting is on.
class XdgAutostartLoginItem : public LoginItem
{
public:
    // launcherPath: the installed glimpso.desktop to copy; when empty or missing,
    // an entry that starts `executable` is written instead.
    XdgAutostartLoginItem(QString entryPath, QString launcherPath, QString executable);

    static QString defaultEntryPath();
    static QString installedLauncherPath();

    bool isEnabled() const override;
    QString setEnabled(bool enabled) override;

private:
    QByteArray entryText() const;

    QString m_entryPath;
    QString m_launcherPath;
    QString m_executable;
};
