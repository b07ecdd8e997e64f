#pragma once

#include "settings/IniSettingsStorage.h"
#include "settings/LoginItem.h"

#include <QTemporaryDir>

#include <memory>

// A real settings file in a temporary folder, and a login item that remembers.
struct RecordingLoginItem : LoginItem {
    bool enabled = false;
    QString failure;
    int calls = 0;
    bool isEnabled() const override { return enabled; }
    QString setEnabled(bool value) override
    {
        ++calls;
        if (!failure.isEmpty())
            return failure;
        enabled = value;
        return {};
    }
};

struct SettingsFile {
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("glimpso/glimpso.conf"));
    std::unique_ptr<IniSettingsStorage> storage = std::make_unique<IniSettingsStorage>(path);

    void reopen() { storage = std::make_unique<IniSettingsStorage>(path); }
};
