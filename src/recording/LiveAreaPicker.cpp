#include "recording/LiveAreaPicker.h"

#include "recording/FloatingPanel.h"
#include "recording/PickerView.h"

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcRecording)

LiveAreaPicker::LiveAreaPicker(Parts parts) : m_parts(std::move(parts)) {}

LiveAreaPicker::~LiveAreaPicker()
{
    if (m_view) {
        m_view->hide();
        m_view.release()->deleteLater();
    }
}

void LiveAreaPicker::pick(const QString &hint, Completion completion)
{
    if (m_view) {
        // One picker at a time: the one up stays.
        if (completion)
            completion(std::nullopt, std::nullopt);
        return;
    }
    const QList<RecordingScreen> screens = m_parts.screens ? m_parts.screens() : QList<RecordingScreen>();
    const QPointF pointer = m_parts.pointer ? m_parts.pointer() : QPointF();
    const std::optional<RecordingScreen> screen = RecordingScreen::under(screens, pointer, 0);
    if (!screen) {
        qCInfo(lcRecording, "picker: no screen to pick on");
        if (completion)
            completion(std::nullopt, std::nullopt);
        return;
    }
    m_screen = screen;
    m_completion = std::move(completion);
    const bool translucent = m_parts.translucent && m_parts.translucent();
    const QPointF origin = screen->frame.topLeft(); // y up: the bottom left corner
    m_view = std::make_unique<PickerView>(hint, translucent, [this, origin](std::optional<QRectF> local) {
        if (!local) {
            finish(std::nullopt, std::nullopt);
            return;
        }
        finish(local->translated(origin), m_screen);
    });
    m_view->setGeometry(FloatingPanel::qtGeometry(screen->frame));
    m_view->show();
    m_view->raise();
    qCInfo(lcRecording, "picker up on display %u (%s)", screen->displayID,
           translucent ? "see-through" : "cut to lines, no compositing manager");
}

void LiveAreaPicker::finish(std::optional<QRectF> rect, std::optional<RecordingScreen> screen)
{
    if (m_view) {
        // The view may be the caller right now.
        m_view->hide();
        m_view.release()->deleteLater();
    }
    m_screen.reset();
    Completion completion = std::exchange(m_completion, {});
    if (rect)
        qCInfo(lcRecording, "picker chose %gx%g at (%g, %g)", rect->width(), rect->height(), rect->x(), rect->y());
    else
        qCInfo(lcRecording, "picker cancelled");
    if (completion)
        completion(rect, rect ? screen : std::nullopt);
}
