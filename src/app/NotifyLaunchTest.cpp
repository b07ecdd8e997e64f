#include "app/NotifyLaunchTest.h"

#include "appbase/AppError.h"
#include "output/Notifier.h"

#include <QVariantMap>

bool NotifyLaunchTest::run(const QString &value, Notifier &notifier)
{
    const QString kind = value.section(u':', 0, 0);
    const QString what = value.section(u':', 1);
    if (kind == u"click") {
        notifier.perform(QVariantMap{{QStringLiteral("settings"), what}}, QString());
        return true;
    }
    if (kind != u"error")
        return false;
    if (what == u"consent")
        notifier.error(AppError::consentRevoked());
    else if (what == u"upload")
        notifier.error(AppError::uploadFailed(QStringLiteral("HTTP 403: Access Denied")));
    else if (what == u"folder")
        notifier.error(AppError::saveFolderUnavailable(QStringLiteral("/media/usb/Shots")));
    else if (what == u"io")
        notifier.error(AppError::fileIOFailed(QStringLiteral("The disk is full.")));
    else
        return false;
    return true;
}
