#include "overlay/WindowPicker.h"

#include "overlay/OverlayLook.h"
#include "overlay/WindowPickerWindow.h"

#include "acquire/CaptureServicing.h"
#include "acquire/WindowList.h"
#include "acquire/WindowTargets.h"
#include "appbase/InProcessNotices.h"
#include "settings/AppSettings.h"

#include <QCursor>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPointer>
#include <QScreen>
#include <QTimer>

Q_LOGGING_CATEGORY(lcWindowPicker, "glimpso.WindowPicker")

WindowPicker::WindowPicker(WindowList &windows, CaptureServicing &capture, ScreenList &screens,
                           const AppSettings &settings, qint64 ownProcessID)
    : m_windowList(windows), m_capture(capture), m_screens(screens), m_settings(settings), m_ownProcessID(ownProcessID)
{
}

WindowPicker::~WindowPicker()
{
    QObject::disconnect(m_escapeConnection);
}

bool WindowPicker::transparentBackground() const
{
    return m_settings.windowTransparent();
}

QList<WindowPickerWindow *> WindowPicker::windows() const
{
    QList<WindowPickerWindow *> result;
    for (const auto &window : m_windows)
        result << window.get();
    return result;
}

void WindowPicker::pick(Completion completion)
{
    if (isPicking()) {
        qCInfo(lcWindowPicker, "pick: a pick is already up; refused");
        if (completion)
            completion(std::nullopt, Qt::NoModifier);
        return;
    }
    m_completion = std::move(completion);
    ++m_generation;
    // Once: windows that open or move during the pick are not seen.
    m_targets = WindowTargets::select(m_windowList.onScreenEntries(), m_ownProcessID);
    m_hovered.reset();
    qCInfo(lcWindowPicker, "pick: %lld window(s) to choose from", qlonglong(m_targets.size()));
    takeSnapshots(m_screens.screens(), 0, {});
}

void WindowPicker::takeSnapshots(QList<ScreenList::Screen> screens, int index, QList<QImage> taken)
{
    if (index >= screens.size()) {
        present(screens, taken);
        return;
    }
    const ScreenList::Screen screen = screens.at(index);
    if (!screen.displayID) {
        takeSnapshots(screens, index + 1, taken << QImage());
        return;
    }
    QPointer<WindowPicker> self(this);
    const quint64 generation = m_generation;
    const auto next = [self, generation, screens, index](QList<QImage> pictures) {
        if (self && self->m_generation == generation && self->isPicking())
            self->takeSnapshots(screens, index + 1, pictures);
    };
    m_capture.captureDisplay(*screen.displayID)
        .then(this, [next, taken, scale = screen.scale](QImage image) mutable {
            image.setDevicePixelRatio(scale);
            next(taken << image);
        })
        .onFailed(this, [next, taken](const std::exception &error) mutable {
            // The veil goes up over black rather than not at all.
            qCWarning(lcWindowPicker, "pick: no picture of a display: %s", error.what());
            next(taken << QImage());
        });
}

void WindowPicker::present(const QList<ScreenList::Screen> &screens, const QList<QImage> &pictures)
{
    const QScreen *primary = QGuiApplication::primaryScreen();
    const DesktopSpace space(primary ? primary->geometry() : QRect());
    const QColor accent = OverlayLook::from(m_settings, CaptureIntent::image).accent;
    for (int i = 0; i < screens.size(); ++i) {
        auto window = std::make_unique<WindowPickerWindow>(*this, screens.at(i).frame, pictures.value(i), space, accent);
        window->show();
        m_windows.push_back(std::move(window));
    }
    // The window under the pointer takes the keys, so that Escape reaches it.
    const QPointF pointer = m_screens.mouseLocation();
    WindowPickerWindow *key = m_windows.empty() ? nullptr : m_windows.front().get();
    for (const auto &window : m_windows)
        if (window->frame().contains(pointer))
            key = window.get();
    if (key) {
        key->raise();
        key->activateWindow();
        key->setFocus(Qt::ActiveWindowFocusReason);
    }
    m_escapeConnection = connect(&InProcessNotices::instance(), &InProcessNotices::overlayEscape, this,
                                 &WindowPicker::escape, Qt::QueuedConnection);
    Q_EMIT InProcessNotices::instance().overlayDidPresent();
    qCInfo(lcWindowPicker, "pick: picker up on %d display(s)", int(m_windows.size()));
    // The window under the pointer lights up at once.
    m_pointer = QPointF(qQNaN(), qQNaN());
    update(pointer);
}

void WindowPicker::update(const QPointF &point)
{
    const QPointF before = m_pointer;
    m_pointer = point;
    const std::optional<WindowTarget> now = WindowTargets::hit(m_targets, point);
    const bool changed = now != m_hovered;
    m_hovered = now;
    // A new hover repaints every display; otherwise only the displays the
    // hint leaves or enters with the pointer.
    for (const auto &window : m_windows)
        if (changed || window->frame().contains(before) != window->frame().contains(point))
            window->update();
}

void WindowPicker::press(const QPointF &point, Qt::KeyboardModifiers modifiers)
{
    update(point);
    if (m_hovered)
        finish(m_hovered, modifiers);
}

void WindowPicker::escape()
{
    if (isPicking())
        finish(std::nullopt, Qt::NoModifier);
}

void WindowPicker::cancel()
{
    escape();
}

void WindowPicker::finish(const std::optional<WindowTarget> &target, Qt::KeyboardModifiers modifiers)
{
    if (target)
        qCInfo(lcWindowPicker, "pick: chose 0x%x (%s)", target->windowID, qUtf8Printable(target->appName));
    else
        qCInfo(lcWindowPicker, "pick: left");
    QObject::disconnect(m_escapeConnection);
    const bool wereUp = !m_windows.empty();
    // A window may be the caller right now: hidden at once, freed once this
    // turn of the event loop is over.
    for (auto &window : m_windows) {
        window->hide();
        window.release()->deleteLater();
    }
    m_windows.clear();
    if (wereUp)
        Q_EMIT InProcessNotices::instance().overlayDidDismiss();
    Completion completion = std::exchange(m_completion, {});
    if (completion)
        completion(target, modifiers);
}
