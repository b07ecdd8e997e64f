#pragma once

#include <QObject>
#include <QString>

// The application's own broadcast notices. They connect the hotkeys, the tray
// menu, the coordinator and the overlay without any of them holding the
// others: the poster emits, whoever cares connects. No payload, main thread.
class InProcessNotices : public QObject
{
    Q_OBJECT
public:
    // The names as they appear in logs and in any future out-of-process bridge.
    static inline const QString hotkeyWillFireName = QStringLiteral("com.tovarine.glimpso.hotkeyWillFire");
    static inline const QString recordingChangedName = QStringLiteral("com.tovarine.glimpso.recordingChanged");
    static inline const QString overlayDidPresentName = QStringLiteral("com.tovarine.glimpso.overlayDidPresent");
    static inline const QString overlayDidDismissName = QStringLiteral("com.tovarine.glimpso.overlayDidDismiss");
    static inline const QString overlayEscapeName = QStringLiteral("com.tovarine.glimpso.overlayEscape");

    // The one centre of the process.
    static InProcessNotices &instance();

Q_SIGNALS:
    // Just before a global hotkey runs its action (never for Escape).
    void hotkeyWillFire();
    // A recording started or ended.
    void recordingChanged();
    // The frozen-screen overlay is up on every display.
    void overlayDidPresent();
    // The overlay has finished and its windows are gone.
    void overlayDidDismiss();
    // Escape was pressed while the overlay was up but another client had the keyboard.
    void overlayEscape();

private:
    InProcessNotices() = default;
};
