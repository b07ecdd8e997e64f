#pragma once

#include "acquire/ScreenList.h"
#include "acquire/WindowPicking.h"
#include "acquire/WindowTarget.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QPointF>

#include <memory>
#include <optional>
#include <vector>

class AppSettings;
class CaptureServicing;
class WindowList;
class WindowPickerWindow;

// The window picker: a veil over every display, the window under the
// pointer lit and outlined with its name and size, a click to choose, Escape
// to leave. The displays are shown as they were when the pick began (a
// desktop without a compositor can't show live windows through a veil), and
// the windows are listed once, then: windows that open or move during the
// pick are not seen. One instance is reused for every pick. Main thread.
class WindowPicker : public QObject, public WindowPicking
{
    Q_OBJECT

public:
    WindowPicker(WindowList &windows, CaptureServicing &capture, ScreenList &screens, const AppSettings &settings,
                 qint64 ownProcessID);
    ~WindowPicker() override;

    void pick(Completion completion) override;
    bool isPicking() const override { return bool(m_completion); }
    void cancel() override;

    // The targets of this pick, front to back, and the one under the
    // pointer.
    const QList<WindowTarget> &targets() const { return m_targets; }
    const std::optional<WindowTarget> &hovered() const { return m_hovered; }
    // The pointer, in global points, as last seen.
    QPointF pointer() const { return m_pointer; }
    bool transparentBackground() const;
    int windowCount() const { return int(m_windows.size()); }
    // The pick's windows, for tests.
    QList<WindowPickerWindow *> windows() const;

    // The pointer moved to a point in global points.
    void update(const QPointF &point);
    // A press at a point: the window under it is chosen; on empty desktop
    // the pick goes on.
    void press(const QPointF &point, Qt::KeyboardModifiers modifiers);
    void escape();

private:
    void takeSnapshots(QList<ScreenList::Screen> screens, int index, QList<QImage> taken);
    void present(const QList<ScreenList::Screen> &screens, const QList<QImage> &pictures);
    void finish(const std::optional<WindowTarget> &target, Qt::KeyboardModifiers modifiers);

    WindowList &m_windowList;
    CaptureServicing &m_capture;
    ScreenList &m_screens;
    const AppSettings &m_settings;
    qint64 m_ownProcessID;

    std::vector<std::unique_ptr<WindowPickerWindow>> m_windows;
    QList<WindowTarget> m_targets;
    std::optional<WindowTarget> m_hovered;
    Completion m_completion;
    QPointF m_pointer;
    QMetaObject::Connection m_escapeConnection;
    // Bumped at each pick, so that shots of a pick already left are dropped.
    quint64 m_generation = 0;
};
