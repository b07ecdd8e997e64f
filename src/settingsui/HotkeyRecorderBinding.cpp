#include "settingsui/HotkeyRecorderBinding.h"

#include "settings/AppSettings.h"
#include "settingsui/RecorderView.h"

HotkeyRecorderBinding::HotkeyRecorderBinding(
    RecorderView &view, Read read, Write write, bool allowsBareKey, QObject *parent)
    : QObject(parent ? parent : &view)
    , m_view(&view)
    , m_read(std::move(read))
    , m_write(std::move(write))
{
    view.setAllowsBareKey(allowsBareKey);
    QPointer<HotkeyRecorderBinding> self(this);
    view.onCapture = [self](const Hotkey &hotkey) {
        if (self && self->m_write)
            self->m_write(hotkey);
    };
    refresh();
}

HotkeyRecorderBinding *HotkeyRecorderBinding::forGlobal(
    RecorderView &view, AppSettings &settings, Setting<Hotkey> &setting)
{
    auto *binding = new HotkeyRecorderBinding(
        view, [&setting] { return setting(); }, [&setting](const Hotkey &hotkey) { setting.set(hotkey); },
        false);
    const QString key = setting.key();
    connect(&settings, &AppSettings::changed, binding, [binding, key](const QString &changed) {
        if (changed == key)
            binding->refresh();
    });
    return binding;
}

HotkeyRecorderBinding *HotkeyRecorderBinding::forEditor(
    RecorderView &view, AppSettings &settings, EditorShortcut shortcut)
{
    auto *binding = new HotkeyRecorderBinding(
        view, [&settings, shortcut] { return settings.editorShortcut(shortcut); },
        [&settings, shortcut](const Hotkey &hotkey) { settings.setEditorShortcut(shortcut, hotkey); }, true);
    const QString key = settings.editorShortcuts.key();
    connect(&settings, &AppSettings::changed, binding, [binding, key](const QString &changed) {
        if (changed == key)
            binding->refresh();
    });
    return binding;
}

void HotkeyRecorderBinding::refresh()
{
    if (m_view && m_read)
        m_view->setHotkey(m_read());
}
