#pragma once

#include "settings/EditorShortcut.h"
#include "settings/Hotkey.h"

#include <QObject>
#include <QPointer>
#include <functional>

class AppSettings;
class RecorderView;
template <typename T> class Setting;

// Ties a RecorderView to one stored shortcut both ways: what the user records
// is written to the settings, and a change of the setting from anywhere else
// (a reset, the file read again) shows in the view.
class HotkeyRecorderBinding : public QObject
{
    Q_OBJECT

public:
    using Read = std::function<Hotkey()>;
    using Write = std::function<void(const Hotkey &)>;

    HotkeyRecorderBinding(
        RecorderView &view, Read read, Write write, bool allowsBareKey, QObject *parent = nullptr);

    // A global shortcut: modifiers required.
    static HotkeyRecorderBinding *forGlobal(
        RecorderView &view, AppSettings &settings, Setting<Hotkey> &setting);
    // An editor shortcut: a bare key is fine (the text tool is T).
    static HotkeyRecorderBinding *forEditor(
        RecorderView &view, AppSettings &settings, EditorShortcut shortcut);

    // Copies the bound value into the view.
    void refresh();

private:
    QPointer<RecorderView> m_view;
    Read m_read;
    Write m_write;
};
