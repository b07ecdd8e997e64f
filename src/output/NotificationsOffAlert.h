#pragma once

#include <QString>

class QMessageBox;

// The one-time explanation shown at a launch on a desktop where no
// notification server answers. It does not block: glimpso goes on working
// behind it, with its own toasts.
class NotificationsOffAlert
{
public:
    static QString message();
    static QString informativeText();
    // Shows the alert and returns it; it deletes itself when closed.
    static QMessageBox *show();
};
