#include "settings/IniSettingsStorage.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStandardPaths>

Q_LOGGING_CATEGORY(lcSettingsFile, "glimpso.AppSettings", QtInfoMsg)

IniSettingsStorage::IniSettingsStorage(const QString &filePath)
    : m_settings(filePath, QSettings::IniFormat)
{
    // QSettings neither creates the folder nor reports a missing one until it writes.
    QDir().mkpath(QFileInfo(filePath).absolutePath());
    if (m_settings.status() == QSettings::FormatError)
        qCWarning(lcSettingsFile) << "settings file has lines that don't parse; readable keys are kept:" << filePath;
}

QString IniSettingsStorage::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/glimpso/glimpso.conf");
}

bool IniSettingsStorage::contains(const QString &key) const
{
    return m_settings.contains(key);
}

QVariant IniSettingsStorage::value(const QString &key) const
{
    return m_settings.value(key);
}

void IniSettingsStorage::setValue(const QString &key, const QVariant &value)
{
    m_settings.setValue(key, value);
    flush();
}

void IniSettingsStorage::remove(const QString &key)
{
    if (!m_settings.contains(key))
        return;
    m_settings.remove(key);
    flush();
}

void IniSettingsStorage::flush()
{
    m_settings.sync();
    if (m_settings.status() == QSettings::AccessError && !m_reportedWriteFailure) {
        m_reportedWriteFailure = true;
        qCWarning(lcSettingsFile) << "cannot write the settings file" << m_settings.fileName()
                                  << "- changes are kept for this session only";
    }
}

void IniSettingsStorage::reread()
{
    // QSettings reads the file again when it changed on disk since it was read.
    m_settings.sync();
}
