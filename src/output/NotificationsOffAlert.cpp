#include "output/NotificationsOffAlert.h"

#include <QMessageBox>

QString NotificationsOffAlert::message()
{
    return QStringLiteral("Notifications are off for glimpso");
}

QString NotificationsOffAlert::informativeText()
{
    return QStringLiteral("glimpso tells you when a capture is copied, saved, uploaded or recorded. Turn "
                          "notifications on by starting your desktop's notification service, or in its "
                          "settings. Until then, glimpso shows its own notices.");
}

QMessageBox *NotificationsOffAlert::show()
{
    auto *box = new QMessageBox(QMessageBox::Information, QStringLiteral("glimpso"), message(), QMessageBox::Ok);
    box->setInformativeText(informativeText());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setModal(false);
    box->show();
    box->raise();
    box->activateWindow();
    return box;
}
