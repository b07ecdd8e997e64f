#pragma once

#include "appbase/AppError.h"
#include "output/Notifying.h"

#include <QList>
#include <QString>

// Keeps every notice and error the code under test shows the user.
struct RecordedNotice {
    QString title;
    QString body;
    double duration;
    NoticeAction action;
};

struct RecordingNotifier : Notifying {
    QList<RecordedNotice> notices;
    QList<AppError> errors;
    void post(const QString &title, const QString &body, double duration, const NoticeAction &action) override
    {
        notices.append({title, body, duration, action});
    }
    void error(const AppError &error) override { errors.append(error); }
};
