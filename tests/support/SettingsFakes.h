#pragma once

#include "settings/LoginItem.h"
#include "settings/SettingsStorage.h"

#include <QMap>
#include <QVariant>

// Settings kept in memory, for tests that need an AppSettings but not its file.
struct MemorySettingsStorage : SettingsStorage {
    QMap<QString, QVariant> values;
    bool contains(const QString &key) const override { return values.contains(key); }
    QVariant value(const QString &key) const override { return values.value(key); }
    void setValue(const QString &key, const QVariant &value) override { values.insert(key, value); }
    void remove(const QString &key) override { values.remove(key); }
};

// A login item that is off and accepts every change without touching the desktop.
struct InertLoginItem : LoginItem {
    bool isEnabled() const override { return false; }
    QString setEnabled(bool) override { return {}; }
};
