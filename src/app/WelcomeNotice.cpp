#include "app/WelcomeNotice.h"

#include "output/Notifying.h"
#include "settings/AppSettings.h"
#include "settings/Hotkey.h"
#include "settings/SettingsStorage.h"

QString WelcomeNotice::body(const Hotkey &region, const Hotkey &allDisplays)
{
    return QStringLiteral("%1 to capture · %2 for all displays · change in Settings")
        .arg(region.displayString(), allDisplays.displayString());
}

bool WelcomeNotice::showOnce(SettingsStorage &defaults, const AppSettings &settings, Notifying &notifier)
{
    if (defaults.value(shownKey).toBool())
        return false;
    defaults.setValue(shownKey, true);
    notifier.post(title, body(settings.hotkeyRegion(), settings.hotkeyAllDisplays()), durationSeconds,
                  NoticeAction::none());
    return true;
}
