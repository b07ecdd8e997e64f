#include "settings/Hotkey.h"

#include "settings/KeyTable.h"

#include <QJsonDocument>
#include <QStringList>

namespace {

QString derivedName(const KeyTableEntry &entry)
{
    if (entry.name)
        return QString::fromUtf8(entry.name);
    if (entry.qtKey >= Qt::Key_F1 && entry.qtKey <= Qt::Key_F35)
        return QStringLiteral("F%1").arg(entry.qtKey - Qt::Key_F1 + 1);
    // Letters and digits: Qt's key value is the character itself.
    return QString(QChar(char16_t(entry.qtKey)));
}

Qt::KeyboardModifiers qtModifiers(uint64_t flags)
{
    Qt::KeyboardModifiers mods;
    if (flags & Hotkey::commandFlag)
        mods |= Qt::ControlModifier;
    if (flags & Hotkey::optionFlag)
        mods |= Qt::AltModifier;
    if (flags & Hotkey::shiftFlag)
        mods |= Qt::ShiftModifier;
    if (flags & Hotkey::controlFlag)
        mods |= Qt::MetaModifier;
    return mods;
}

std::optional<uint64_t> jsonUnsigned(const QJsonValue &value)
{
    if (!value.isDouble())
        return std::nullopt;
    const double d = value.toDouble();
    if (d < 0 || d != double(uint64_t(d)))
        return std::nullopt;
    return uint64_t(d);
}

} // namespace

QString Hotkey::displayString() const
{
    if (!isAssigned())
        return QStringLiteral("—");
    QStringList parts;
    if (modifierFlagsRaw & commandFlag)
        parts << QStringLiteral("Ctrl");
    if (modifierFlagsRaw & optionFlag)
        parts << QStringLiteral("Alt");
    if (modifierFlagsRaw & shiftFlag)
        parts << QStringLiteral("Shift");
    if (modifierFlagsRaw & controlFlag)
        parts << QStringLiteral("Super");
    parts << keyName(keyCode);
    return parts.join(QLatin1Char('+'));
}

QString Hotkey::keyName(uint16_t keyCode)
{
    if (const KeyTableEntry *entry = KeyTable::byCode(keyCode))
        return derivedName(*entry);
    return QStringLiteral("key(%1)").arg(keyCode);
}

std::optional<QKeySequence> Hotkey::menuKeyEquivalent() const
{
    if (!isAssigned() || keyCode > 122)
        return std::nullopt;
    const KeyTableEntry *entry = KeyTable::byCode(keyCode);
    if (!entry || !entry->menuEquivalent)
        return std::nullopt;
    return keySequence();
}

QKeySequence Hotkey::keySequence() const
{
    const KeyTableEntry *entry = isAssigned() ? KeyTable::byCode(keyCode) : nullptr;
    if (!entry)
        return {};
    Qt::KeyboardModifiers mods = qtModifiers(modifierFlagsRaw);
    if (entry->keypad)
        mods |= Qt::KeypadModifier;
    return QKeySequence(QKeyCombination(mods, entry->qtKey));
}

std::optional<Hotkey> Hotkey::fromKeyEvent(int qtKey, Qt::KeyboardModifiers modifiers)
{
    const KeyTableEntry *entry = KeyTable::byQtKey(Qt::Key(qtKey), modifiers.testFlag(Qt::KeypadModifier));
    if (!entry)
        return std::nullopt;
    uint64_t flags = 0;
    if (modifiers & Qt::ControlModifier)
        flags |= commandFlag;
    if (modifiers & Qt::AltModifier)
        flags |= optionFlag;
    if (modifiers & Qt::ShiftModifier)
        flags |= shiftFlag;
    if (modifiers & Qt::MetaModifier)
        flags |= controlFlag;
    return Hotkey{entry->code, flags};
}

QJsonObject Hotkey::toJson() const
{
    return QJsonObject{{QStringLiteral("keyCode"), int(keyCode)},
                       {QStringLiteral("modifierFlagsRaw"), double(modifierFlagsRaw)}};
}

QByteArray Hotkey::toJsonText() const
{
    return QJsonDocument(toJson()).toJson(QJsonDocument::Compact);
}

std::optional<Hotkey> Hotkey::fromJson(const QJsonValue &value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject object = value.toObject();
    const auto code = jsonUnsigned(object.value(QStringLiteral("keyCode")));
    const auto flags = jsonUnsigned(object.value(QStringLiteral("modifierFlagsRaw")));
    if (!code || !flags || *code > 0xffff)
        return std::nullopt;
    return Hotkey{uint16_t(*code), *flags};
}

std::optional<Hotkey> Hotkey::fromJsonText(const QByteArray &text)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject())
        return std::nullopt;
    return fromJson(doc.object());
}
