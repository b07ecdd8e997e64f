#pragma once

#include <QString>

#include <functional>

// glimpso's own on-screen notice, for a desktop without notifications and for
// progress. One at a time: a new one replaces the one standing.
class Toasting
{
public:
    virtual ~Toasting() = default;
    // Without onClick the notice lets clicks through to what lies under it.
    virtual void show(const QString &title, const QString &body, double seconds, std::function<void()> onClick) = 0;
    // Fades the standing notice out, if there is one.
    virtual void dismiss() = 0;
    // New words for the standing notice, in place, with no fade and no new
    // time; nothing when none stands. How a progress notice moves on.
    virtual void changeText(const QString &title, const QString &body) = 0;
};
