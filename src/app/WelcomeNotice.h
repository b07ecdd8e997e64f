#pragma once

#include <QString>

class AppSettings;
class Notifying;
class SettingsStorage;
struct Hotkey;

// The first launch's notice: glimpso is in the tray, and which shortcuts
// capture. Shown once ever; the key is set before the notice goes out, so a
// notice that gets lost is not tried again.
class WelcomeNotice
{
public:
    static inline const QString shownKey = QStringLiteral("settings.welcomeShown");
    static inline const QString title = QStringLiteral("glimpso is ready");
    static constexpr double durationSeconds = 6.0;

    static QString body(const Hotkey &region, const Hotkey &allDisplays);
    // Whether it was shown now.
    static bool showOnce(SettingsStorage &defaults, const AppSettings &settings, Notifying &notifier);
};
