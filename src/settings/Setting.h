#pragma once

#include "settings/SettingCodec.h"
#include "settings/SettingsStorage.h"

#include <QString>

#include <functional>

// One row of the settings table: a stored key, its default and its load rule,
// with the value held in memory. Reading is a plain call (`settings.strokeWidth()`);
// `set` writes the file at once and tells the owner, which publishes the change.
template <typename T>
class Setting
{
public:
    using Notify = std::function<void(const QString &key)>;

    Setting(SettingsStorage &storage, const Notify &notify, QString key, T fallback, LoadRule rule)
        : m_storage(storage)
        , m_notify(notify)
        , m_key(std::move(key))
        , m_default(std::move(fallback))
        , m_rule(rule)
        , m_value(load())
    {
    }

    Setting(const Setting &) = delete;
    Setting &operator=(const Setting &) = delete;

    const T &operator()() const { return m_value; }
    const T &value() const { return m_value; }
    const T &defaultValue() const { return m_default; }
    const QString &key() const { return m_key; }
    LoadRule loadRule() const { return m_rule; }

    // Stores what it is given; limits belong to the controls and readers, not here.
    void set(const T &value)
    {
        const bool changed = !(value == m_value);
        m_value = value;
        m_storage.setValue(m_key, SettingCodec::write(m_value));
        if (changed)
            m_notify(m_key);
    }

    void reset() { set(m_default); }

    // Reads the stored value again, for a file edited by hand while glimpso
    // runs; a value that differs is published like an assignment.
    void reload()
    {
        T fresh = load();
        if (fresh == m_value)
            return;
        m_value = std::move(fresh);
        m_notify(m_key);
    }

private:
    T load() const
    {
        if (!m_storage.contains(m_key))
            return m_rule == LoadRule::boolean ? T{} : m_default;
        return SettingCodec::readAny<T>(m_storage.value(m_key), m_rule).value_or(m_default);
    }

    SettingsStorage &m_storage;
    const Notify &m_notify;
    QString m_key;
    T m_default;
    LoadRule m_rule;
    T m_value;
};
