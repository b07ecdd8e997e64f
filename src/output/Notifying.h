#pragma once

#include "appbase/AppError.h"
#include "settings/SettingsTab.h"

#include <QString>

// What a click on a notice does.
struct NoticeAction {
    // Declaration order is part of the vocabulary; keep it.
    enum class Kind { reveal, open, showSettings, none, showUpdates, reportProblem };
    Kind kind = Kind::none;
    // The file to show in its folder, the link to open, or the settings page's raw text.
    QString target;

    static NoticeAction none() { return {}; }
    static NoticeAction reveal(const QString &path) { return {Kind::reveal, path}; }
    static NoticeAction open(const QString &link) { return {Kind::open, link}; }
    static NoticeAction showSettings(SettingsTab tab) { return {Kind::showSettings, enumText(tab)}; }
    static NoticeAction showUpdates() { return {Kind::showUpdates, {}}; }
    static NoticeAction reportProblem() { return {Kind::reportProblem, {}}; }
    bool operator==(const NoticeAction &) const = default;
};

// The one entry point for everything the user is told: the desktop's
// notifications, or glimpso's own toast where there are none.
class Notifying
{
public:
    virtual ~Notifying() = default;
    virtual void post(const QString &title, const QString &body, double durationSeconds, const NoticeAction &action) = 0;
    // A failure that ends a flow.
    virtual void error(const AppError &error) = 0;
};
