#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>

class DockPresence;
class SettingsStorage;

// A top-level window around content made on first show: the settings, the
// editor and the trim windows. It remembers where the user left it under its
// autosave name, opens centred on the screen under the pointer the first time,
// and counts itself in DockPresence while it is open, so that the tray
// application comes forward with it.
//
// Closing hides the window and keeps its content, so the next show() finds it
// as it was left; only destroying the HostedWindow lets it go.
class HostedWindow : public QObject
{
    Q_OBJECT

public:
    struct Config {
        // For the taskbar and the window switcher.
        QString title;
        // The content's size; with `resizable` also its smallest size.
        QSize size;
        // Where the frame is kept between runs; empty keeps nothing.
        QString autosaveName;
        bool resizable = false;
        // Shows without taking the focus from the window that has it.
        bool opensUnfocused = false;
    };

    // `frames` keeps the saved frames (the settings file, in the application);
    // it may be null. `dock` and `frames` outlive this object.
    HostedWindow(DockPresence &dock, SettingsStorage *frames, Config config,
                 std::function<QWidget *()> makeContent, QObject *parent = nullptr);
    // Lets the window go; an open one is saved and uncounted, without onClose.
    ~HostedWindow() override;

    // Brings the window forward if it is open, otherwise opens it.
    void show();
    bool isOpen() const { return m_open; }
    // Absent until the first show().
    QWidget *window() const { return m_window; }
    const Config &config() const { return m_config; }

    // Runs after each close, once the window is hidden and uncounted.
    std::function<void()> onClose;

    // The settings key of a saved frame, and its text: "x y width height" of
    // the content area in desktop pixels.
    static QString frameKey(const QString &autosaveName);
    static QString frameText(const QRect &frame);
    static QRect frameFromText(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void create();
    void open();
    void bringForward();
    void place();
    void closed();
    QRect savedFrame() const;
    void saveFrame();

    DockPresence &m_dock;
    SettingsStorage *m_frames;
    Config m_config;
    std::function<QWidget *()> m_makeContent;
    QPointer<QWidget> m_window;
    bool m_open = false;
    bool m_shownBefore = false;
    // Moves and resizes come in bursts; the frame is written once they settle.
    QTimer m_saveTimer;
};
