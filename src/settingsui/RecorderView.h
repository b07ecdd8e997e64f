#pragma once

#include "settings/Hotkey.h"

#include <QWidget>
#include <functional>
#include <optional>

// The control with which a shortcut is set: click it, press the combination.
// At rest it shows the shortcut ("Ctrl+Shift+2") or "Click to record"; while
// listening, "Press shortcut…". Escape clears the shortcut, so Escape itself
// can never be one. A bare key (no modifier) is refused with a beep unless
// allowsBareKey, which editor shortcuts set and global ones do not.
class RecorderView : public QWidget
{
    Q_OBJECT

public:
    // Set on the view while it listens, so that the hotkeys of glimpso's own
    // windows leave its key presses alone.
    static constexpr const char *listeningProperty = "glimpsoListensForShortcut";

    explicit RecorderView(QWidget *parent = nullptr);

    Hotkey hotkey() const { return m_hotkey; }
    void setHotkey(const Hotkey &hotkey);
    bool allowsBareKey() const { return m_allowsBareKey; }
    void setAllowsBareKey(bool allowed) { m_allowsBareKey = allowed; }
    bool isRecording() const { return m_recording; }
    // What the control shows now.
    QString labelText() const;

    // Runs with the new shortcut after each capture or clear.
    std::function<void(const Hotkey &)> onCapture;
    // The refusal of a bare key; the desktop's bell unless replaced.
    std::function<void()> onBeep;
    // The stored key code of a key by the display server's scan code, where
    // the desktop can tell (it knows the key under a shifted character);
    // Qt's key is used otherwise.
    std::function<std::optional<uint16_t>(quint32 nativeScanCode)> keyCodeForScanCode;

    QSize sizeHint() const override { return { 140, 28 }; }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void setRecording(bool recording);
    void capture(const Hotkey &hotkey);
    void beep();

    Hotkey m_hotkey;
    bool m_allowsBareKey = false;
    bool m_recording = false;
};
