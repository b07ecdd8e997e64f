#include "recording/RecordingChromeWidgets.h"

#include "recording/CountdownPanel.h"
#include "recording/RecordingBorder.h"
#include "recording/RecordingControlBar.h"

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcRecording)

namespace {

// Windows go once the current turn of the event loop is over: a button of
// the bar may be the caller right now.
template <typename T>
void dispose(std::unique_ptr<T> &window)
{
    if (!window)
        return;
    window->hide();
    window.release()->deleteLater();
}

QString describe(const QRect &rect)
{
    return QStringLiteral("%1x%2+%3+%4").arg(rect.width()).arg(rect.height()).arg(rect.x()).arg(rect.y());
}

} // namespace

RecordingChromeWidgets::RecordingChromeWidgets(bool translucent) : m_translucent(translucent) {}

RecordingChromeWidgets::~RecordingChromeWidgets()
{
    hideAll();
}

void RecordingChromeWidgets::showBorder(const QRectF &area)
{
    if (!m_border)
        m_border = std::make_unique<RecordingBorder>(m_translucent);
    m_border->showAround(area);
    qCInfo(lcRecording, "border shown at %s", qUtf8Printable(describe(m_border->geometry())));
}

void RecordingChromeWidgets::showCountdown(const QRectF &area, int n)
{
    if (!m_countdown)
        m_countdown = std::make_unique<CountdownPanel>(m_translucent);
    m_countdown->showCount(area, n);
    qCInfo(lcRecording, "countdown %d", n);
}

void RecordingChromeWidgets::hideCountdown()
{
    dispose(m_countdown);
}

QSizeF RecordingChromeWidgets::barSize() const
{
    return QSizeF(RecordingControlBar::barSize);
}

void RecordingChromeWidgets::showBar(const QRectF &frame, std::function<void()> onStop, std::function<void()> onCancel)
{
    dispose(m_bar);
    m_bar = std::make_unique<RecordingControlBar>(m_translucent, std::move(onStop), std::move(onCancel));
    m_bar->showAt(frame);
    qCInfo(lcRecording, "control bar shown at %s", qUtf8Printable(describe(m_bar->geometry())));
}

void RecordingChromeWidgets::setSeconds(double seconds)
{
    if (m_bar)
        m_bar->setSeconds(seconds);
}

void RecordingChromeWidgets::hideAll()
{
    dispose(m_border);
    dispose(m_countdown);
    dispose(m_bar);
}
