#pragma once

#include "output/Notifying.h"

// Notices written to the log only: what the application uses while no
// notification service stands behind it, and what scripts read.
class LoggingNotifier : public Notifying
{
public:
    void post(const QString &title, const QString &body, double durationSeconds, const NoticeAction &action) override;
    void error(const AppError &error) override;
};
