#pragma once

#include "settings/SettingsEnums.h"

// The pages of the settings window. Persisted: a page travels as its raw text,
// which equals the case name, in notices ("settings" of a click) and in
// GLIMPSO_SHOW_SETTINGS; the order is the order of the sidebar.
enum class SettingsTab { general, screenshots, recording, history, appearance, shortcuts, cloud, updates, about };

template <>
struct EnumCases<SettingsTab> {
    static constexpr std::array cases = {
        std::pair{SettingsTab::general, "general"},       std::pair{SettingsTab::screenshots, "screenshots"},
        std::pair{SettingsTab::recording, "recording"},   std::pair{SettingsTab::history, "history"},
        std::pair{SettingsTab::appearance, "appearance"}, std::pair{SettingsTab::shortcuts, "shortcuts"},
        std::pair{SettingsTab::cloud, "cloud"},           std::pair{SettingsTab::updates, "updates"},
        std::pair{SettingsTab::about, "about"}};
};
