#pragma once

#include "SettingsFakes.h"
#include "annotation/EditorAction.h"
#include "settings/AppSettings.h"

#include <QList>

// Settings in memory and a record of every action a toolbar sends.
struct ToolbarFixture {
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings{storage, login};
    QList<EditorAction> sent;

    std::function<void(const EditorAction &)> handler()
    {
        return [this](const EditorAction &action) { sent.append(action); };
    }
};
