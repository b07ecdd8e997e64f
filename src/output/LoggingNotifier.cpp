#include "output/LoggingNotifier.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcNotices, "glimpso.Notifier")

void LoggingNotifier::post(const QString &title, const QString &body, double durationSeconds,
                           const NoticeAction &action)
{
    qCInfo(lcNotices, "notice: %s — %s (%.1fs, %s)", qUtf8Printable(title), qUtf8Printable(body), durationSeconds,
           qUtf8Printable(action.target.isEmpty() ? QStringLiteral("no action") : action.target));
}

void LoggingNotifier::error(const AppError &error)
{
    qCWarning(lcNotices, "error notice: %s", qUtf8Printable(error.errorDescription()));
}
