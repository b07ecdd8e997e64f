#pragma once

#include "settings/EditorShortcut.h"
#include "settings/Hotkey.h"
#include "settings/SettingsEnums.h"

#include <QStringList>
#include <QVariant>

#include <optional>

// How a value is read back, which decides what a new install gets and what a
// stored value of the wrong type turns into:
//   object  - convert the stored value; absent or unconvertible gives the default
//   boolean - absent or unreadable reads false; these keys have no other default
//   string  - stored text; absent, or text naming no case of an enumeration, gives the default
//   json    - decode the stored JSON; absent or undecodable gives the default
enum class LoadRule { object, boolean, string, json };

namespace SettingCodec {

// INI text with an unquoted comma comes back as a list; put it back together.
inline QString text(const QVariant &stored)
{
    if (stored.typeId() == QMetaType::QStringList)
        return stored.toStringList().join(QLatin1Char(','));
    return stored.toString();
}

inline std::optional<bool> parseBool(const QVariant &stored)
{
    const QString t = text(stored).trimmed().toLower();
    if (t == u"true" || t == u"1" || t == u"yes")
        return true;
    if (t == u"false" || t == u"0" || t == u"no")
        return false;
    return std::nullopt;
}

template <typename T>
std::optional<T> read(const QVariant &stored, LoadRule rule);

template <>
inline std::optional<QString> read<QString>(const QVariant &stored, LoadRule)
{
    return text(stored);
}

template <>
inline std::optional<double> read<double>(const QVariant &stored, LoadRule)
{
    bool ok = false;
    const double value = text(stored).trimmed().toDouble(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

template <>
inline std::optional<qint64> read<qint64>(const QVariant &stored, LoadRule)
{
    const QString t = text(stored).trimmed();
    bool ok = false;
    const qint64 whole = t.toLongLong(&ok);
    if (ok)
        return whole;
    const double number = t.toDouble(&ok);
    if (ok && number >= -9.2e18 && number <= 9.2e18)
        return qint64(number);
    return std::nullopt;
}

template <>
inline std::optional<bool> read<bool>(const QVariant &stored, LoadRule rule)
{
    const auto value = parseBool(stored);
    if (rule == LoadRule::boolean)
        return value.value_or(false);
    return value;
}

template <>
inline std::optional<Hotkey> read<Hotkey>(const QVariant &stored, LoadRule)
{
    return Hotkey::fromJsonText(text(stored).toUtf8());
}

template <>
inline std::optional<EditorShortcutMap> read<EditorShortcutMap>(const QVariant &stored, LoadRule)
{
    return EditorShortcuts::decode(text(stored).toUtf8());
}

template <PersistedEnum E>
std::optional<E> readEnum(const QVariant &stored)
{
    return enumFromText<E>(text(stored));
}

inline QVariant write(const QString &value) { return value; }
inline QVariant write(double value) { return value; }
inline QVariant write(qint64 value) { return value; }
inline QVariant write(bool value) { return value; }
inline QVariant write(const Hotkey &value) { return QString::fromUtf8(value.toJsonText()); }
inline QVariant write(const EditorShortcutMap &value) { return QString::fromUtf8(EditorShortcuts::encode(value)); }
template <PersistedEnum E>
QVariant write(E value)
{
    return enumText(value);
}

template <typename T>
std::optional<T> readAny(const QVariant &stored, LoadRule rule)
{
    if constexpr (PersistedEnum<T>)
        return readEnum<T>(stored);
    else
        return read<T>(stored, rule);
}

} // namespace SettingCodec
