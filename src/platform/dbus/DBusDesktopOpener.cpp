#include "platform/dbus/DBusDesktopOpener.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFileInfo>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcDesktopOpener, "glimpso.DesktopOpener", QtInfoMsg)

DBusDesktopOpener::DBusDesktopOpener(QDBusConnection connection, QObject *parent)
    : QObject(parent)
    , m_connection(std::move(connection))
{
}

void DBusDesktopOpener::open(const QUrl &url)
{
    qCInfo(lcDesktopOpener, "open: %s", qUtf8Printable(url.toDisplayString()));
    if (!QDesktopServices::openUrl(url))
        qCWarning(lcDesktopOpener, "the desktop could not open %s", qUtf8Printable(url.toDisplayString()));
}

void DBusDesktopOpener::reveal(const QString &path)
{
    const QUrl folder = QUrl::fromLocalFile(QFileInfo(path).absolutePath());
    if (!m_connection.isConnected()) {
        open(folder);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << QString();
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call, 10000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, path, folder](QDBusPendingCallWatcher *finished) {
        finished->deleteLater();
        const QDBusPendingReply<> reply = *finished;
        if (!reply.isError()) {
            qCInfo(lcDesktopOpener, "reveal: %s shown by the file manager", qUtf8Printable(path));
            return;
        }
        qCInfo(lcDesktopOpener, "reveal: no file manager answers (%s); opening the folder",
               qUtf8Printable(reply.error().name()));
        open(folder);
    });
}
