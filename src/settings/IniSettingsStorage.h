#pragma once

#include "settings/SettingsStorage.h"

#include <QSettings>

// The settings file: INI text at $XDG_CONFIG_HOME/glimpso/glimpso.conf, one
// "settings.area.name=value" line per key. Every write is flushed at once so a
// crash loses nothing; a file that can't be written keeps the values in memory
// for the session and says so once in the log.
class IniSettingsStorage : public SettingsStorage
{
public:
    explicit IniSettingsStorage(const QString &filePath);

    static QString defaultFilePath();
    QString filePath() const { return m_settings.fileName(); }

    bool contains(const QString &key) const override;
    QVariant value(const QString &key) const override;
    void setValue(const QString &key, const QVariant &value) override;
    void remove(const QString &key) override;
    void reread() override;

private:
    void flush();

    QSettings m_settings;
    bool m_reportedWriteFailure = false;
};
