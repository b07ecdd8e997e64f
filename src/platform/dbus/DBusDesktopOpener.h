#pragma once

#include "output/DesktopOpener.h"

#include <QDBusConnection>
#include <QObject>

// Opens files and links with the user's default programs, and shows a file in
// its folder through the file manager's org.freedesktop.FileManager1 ShowItems;
// where no file manager answers, the folder is opened instead.
class DBusDesktopOpener : public QObject, public DesktopOpener
{
    Q_OBJECT

public:
    explicit DBusDesktopOpener(QDBusConnection connection = QDBusConnection::sessionBus(), QObject *parent = nullptr);

    void open(const QUrl &url) override;
    void reveal(const QString &path) override;

private:
    QDBusConnection m_connection;
};
