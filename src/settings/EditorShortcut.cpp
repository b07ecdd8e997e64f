#include "settings/EditorShortcut.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace EditorShortcuts {

QString rawText(EditorShortcut shortcut)
{
    switch (shortcut) {
    case EditorShortcut::copy: return QStringLiteral("copy");
    case EditorShortcut::save: return QStringLiteral("save");
    case EditorShortcut::upload: return QStringLiteral("upload");
    case EditorShortcut::undo: return QStringLiteral("undo");
    case EditorShortcut::redo: return QStringLiteral("redo");
    case EditorShortcut::text: return QStringLiteral("text");
    }
    return {};
}

std::optional<EditorShortcut> fromRawText(const QString &text)
{
    for (EditorShortcut shortcut : allCases) {
        if (rawText(shortcut) == text)
            return shortcut;
    }
    return std::nullopt;
}

Hotkey defaultHotkey(EditorShortcut shortcut)
{
    switch (shortcut) {
    case EditorShortcut::copy: return {8, Hotkey::commandFlag};
    case EditorShortcut::save: return {1, Hotkey::commandFlag};
    case EditorShortcut::upload: return {32, Hotkey::commandFlag};
    case EditorShortcut::undo: return {6, Hotkey::commandFlag};
    case EditorShortcut::redo: return {6, Hotkey::commandFlag | Hotkey::shiftFlag};
    case EditorShortcut::text: return {17, 0}; // bare on purpose: only while no text is being typed
    }
    return Hotkey::unassigned();
}

EditorShortcutMap defaults()
{
    EditorShortcutMap map;
    for (EditorShortcut shortcut : allCases)
        map[shortcut] = defaultHotkey(shortcut);
    return map;
}

EditorShortcutMap decode(const QByteArray &json)
{
    EditorShortcutMap map;
    const QJsonDocument doc = QJsonDocument::fromJson(json);
    if (doc.isObject()) {
        // The object decodes as a whole or not at all: one malformed record
        // makes it unreadable, while a well-formed record under an unknown
        // name is merely dropped.
        const QJsonObject object = doc.object();
        for (auto it = object.begin(); it != object.end(); ++it) {
            const auto hotkey = Hotkey::fromJson(it.value());
            if (!hotkey) {
                map.clear();
                break;
            }
            if (const auto shortcut = fromRawText(it.key()))
                map[*shortcut] = *hotkey;
        }
    }
    // An older file with fewer shortcuts gains the new ones; the map is never partial.
    for (EditorShortcut shortcut : allCases)
        map.try_emplace(shortcut, defaultHotkey(shortcut));
    return map;
}

QByteArray encode(const EditorShortcutMap &map)
{
    QJsonObject object;
    for (const auto &[shortcut, hotkey] : map)
        object.insert(rawText(shortcut), hotkey.toJson());
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace EditorShortcuts
