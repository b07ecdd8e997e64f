#pragma once

#include "acquire/RegionSelecting.h"
#include "appbase/CaptureIntent.h"
#include "overlay/OverlayLook.h"
#include "overlay/SelectionCanvas.h"

#include <QElapsedTimer>
#include <QMetaObject>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <vector>

class AppSettings;
class QScreen;
class SelectorView;

// The frozen-screen overlay of one capture: a borderless, topmost window per
// display over the snapshots, one selection canvas behind them all, and one
// result. Windows never outlive it.
class RegionSelector : public QObject, public RegionSelecting
{
    Q_OBJECT

public:
    struct Options {
        CaptureIntent intent = CaptureIntent::image;
        SelectionCanvas::ToolbarFactory makeToolbar;
    };

    RegionSelector(QList<ScreenSnapshot> snapshots, AppSettings &settings, Options options,
                   std::function<void(const RegionResult &)> completion);
    ~RegionSelector() override;

    void present() override;
    std::optional<ArmedSelection> armedSelection() const override;
    void finish(const RegionResult &result) override;

    // Escape from the global grab, when another client holds the keyboard.
    void handleEscape();

    SelectionCanvas *canvas() const { return m_canvas.get(); }
    const std::vector<std::unique_ptr<SelectorView>> &views() const { return m_views; }

    // The Qt screen that shows the snapshot's display; none when it is gone.
    static QScreen *screenFor(const ScreenSnapshot &snapshot);

private:
    void makeKey(SelectorView *view);
    SelectorView *viewUnderPointer() const;
    void viewPainted();

    QList<ScreenSnapshot> m_snapshots;
    AppSettings &m_settings;
    Options m_options;
    std::function<void(const RegionResult &)> m_completion;
    std::unique_ptr<SelectionCanvas> m_canvas;
    std::vector<std::unique_ptr<SelectorView>> m_views;
    bool m_didFinish = false;
    QMetaObject::Connection m_escapeConnection;
    int m_paintedViews = 0;
    QElapsedTimer m_sincePresent;
};
