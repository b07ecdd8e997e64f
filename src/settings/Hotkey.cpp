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

// With Shift held, Qt reports the character the key types ("@" for Shift+2 on
// a US keyboard); stored shortcuts name the key. The US pairs cover the
// common layouts; a layout that differs is resolved by the display server's
// own key map where the caller has one (GlobalKeyGrabber::keyCodeForScanCode).
Qt::Key unshifted(Qt::Key key)
{
    static constexpr std::pair<Qt::Key, Qt::Key> pairs[] = {
        {Qt::Key_Exclam, Qt::Key_1},      {Qt::Key_At, Qt::Key_2},          {Qt::Key_NumberSign, Qt::Key_3},
        {Qt::Key_Dollar, Qt::Key_4},      {Qt::Key_Percent, Qt::Key_5},     {Qt::Key_AsciiCircum, Qt::Key_6},
        {Qt::Key_Ampersand, Qt::Key_7},   {Qt::Key_Asterisk, Qt::Key_8},    {Qt::Key_ParenLeft, Qt::Key_9},
        {Qt::Key_ParenRight, Qt::Key_0},  {Qt::Key_Underscore, Qt::Key_Minus}, {Qt::Key_Plus, Qt::Key_Equal},
        {Qt::Key_BraceLeft, Qt::Key_BracketLeft}, {Qt::Key_BraceRight, Qt::Key_BracketRight},
        {Qt::Key_Colon, Qt::Key_Semicolon}, {Qt::Key_QuoteDbl, Qt::Key_Apostrophe}, {Qt::Key_Less, Qt::Key_Comma},
        {Qt::Key_Greater, Qt::Key_Period}, {Qt::Key_Question, Qt::Key_Slash}, {Qt::Key_Bar, Qt::Key_Backslash},
        {Qt::Key_AsciiTilde, Qt::Key_QuoteLeft}, {Qt::Key_Backtab, Qt::Key_Tab},
    };
    for (const auto &[shifted, plain] : pairs) {
        if (shifted == key)
            return plain;
    }
    return key;
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
    const bool keypad = modifiers.testFlag(Qt::KeypadModifier);
    const KeyTableEntry *entry = KeyTable::byQtKey(Qt::Key(qtKey), keypad);
    if (!entry && modifiers.testFlag(Qt::ShiftModifier) && !keypad)
        entry = KeyTable::byQtKey(unshifted(Qt::Key(qtKey)), false);
    if (!entry)
        return std::nullopt;
    return withModifiers(entry->code, modifiers);
}

Hotkey Hotkey::withModifiers(uint16_t keyCode, Qt::KeyboardModifiers modifiers)
{
    uint64_t flags = 0;
    if (modifiers & Qt::ControlModifier)
        flags |= commandFlag;
    if (modifiers & Qt::AltModifier)
        flags |= optionFlag;
    if (modifiers & Qt::ShiftModifier)
        flags |= shiftFlag;
    if (modifiers & Qt::MetaModifier)
        flags |= controlFlag;
    return Hotkey{keyCode, flags};
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
