#include "platform/desktop/XdgAutostartLoginItem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

XdgAutostartLoginItem::XdgAutostartLoginItem(QString entryPath, QString launcherPath, QString executable)
    : m_entryPath(std::move(entryPath))
    , m_launcherPath(std::move(launcherPath))
    , m_executable(std::move(executable))
{
}

QString XdgAutostartLoginItem::defaultEntryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/glimpso.desktop");
}

QString XdgAutostartLoginItem::installedLauncherPath()
{
    return QStandardPaths::locate(QStandardPaths::ApplicationsLocation, QStringLiteral("glimpso.desktop"));
}

bool XdgAutostartLoginItem::isEnabled() const
{
    return QFileInfo::exists(m_entryPath);
}

QByteArray XdgAutostartLoginItem::entryText() const
{
    if (!m_launcherPath.isEmpty()) {
        QFile launcher(m_launcherPath);
        if (launcher.open(QIODevice::ReadOnly))
            return launcher.readAll();
    }
    QByteArray text = "[Desktop Entry]\n"
                      "Type=Application\n"
                      "Name=glimpso\n"
                      "Comment=Screenshots and screen recordings from the system tray\n"
                      "Icon=glimpso\n"
                      "Terminal=false\n"
                      "Categories=Graphics;Utility;\n";
    text += "Exec=" + QFile::encodeName(m_executable) + "\n";
    return text;
}

QString XdgAutostartLoginItem::setEnabled(bool enabled)
{
    if (!enabled) {
        QFile entry(m_entryPath);
        if (entry.exists() && !entry.remove())
            return entry.errorString();
        return {};
    }
    if (!QDir().mkpath(QFileInfo(m_entryPath).absolutePath()))
        return QStringLiteral("cannot create %1").arg(QFileInfo(m_entryPath).absolutePath());
    QSaveFile entry(m_entryPath);
    if (!entry.open(QIODevice::WriteOnly))
        return entry.errorString();
    entry.write(entryText());
    if (!entry.commit())
        return entry.errorString();
    return {};
}
