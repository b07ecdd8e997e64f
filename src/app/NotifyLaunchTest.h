#pragma once

#include <QString>

class Notifier;

// GLIMPSO_TEST_NOTIFY: shows one failure notice, or performs one click, at
// launch, so that a run without a person can see notices and their clicks.
// "error:consent", "error:upload", "error:folder", "error:io", or
// "click:<settings page>"; any other value does nothing.
class NotifyLaunchTest
{
public:
    // Whether the value asked for something.
    static bool run(const QString &value, Notifier &notifier);
};
