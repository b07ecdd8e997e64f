#pragma once

#include "appbase/AppError.h"

#include <QString>

// What a click on a notice does.
struct NoticeAction {
    enum class Kind { none, reveal, open };
    Kind kind = Kind::none;
    // The file to show in its folder, or the link to open.
    QString target;

    static NoticeAction none() { return {}; }
    static NoticeAction reveal(const QString &path) { return {Kind::reveal, path}; }
    static NoticeAction open(const QString &link) { return {Kind::open, link}; }
    bool operator==(const NoticeAction &) const = default;
};

// The one entry point for everything the user is told. The desktop notifier
// implements it; until it is there, the application logs the notices.
class Notifying
{
public:
    virtual ~Notifying() = default;
    virtual void post(const QString &title, const QString &body, double durationSeconds, const NoticeAction &action) = 0;
    // A failure that ends a flow.
    virtual void error(const AppError &error) = 0;
};
