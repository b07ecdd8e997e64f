#include "settingsui/RecorderView.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr uint16_t escapeCode = 53;

bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
        return true;
    default:
        return false;
    }
}

} // namespace

RecorderView::RecorderView(QWidget *parent)
    : QWidget(parent)
{
    // Only a click starts listening: focus arriving by itself (a window shown,
    // Tab through a page) would swallow the next keys the user meant elsewhere.
    setFocusPolicy(Qt::ClickFocus);
    setAttribute(Qt::WA_InputMethodEnabled, false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void RecorderView::setHotkey(const Hotkey &hotkey)
{
    if (hotkey == m_hotkey)
        return;
    m_hotkey = hotkey;
    update();
}

QString RecorderView::labelText() const
{
    if (m_recording)
        return QStringLiteral("Press shortcut…");
    if (!m_hotkey.isAssigned())
        return QStringLiteral("Click to record");
    return m_hotkey.displayString();
}

bool RecorderView::event(QEvent *event)
{
    if (m_recording) {
        // While listening every key is a candidate: Tab must not move the
        // focus and no application shortcut may take the press first.
        if (event->type() == QEvent::ShortcutOverride) {
            event->accept();
            return true;
        }
        if (event->type() == QEvent::KeyPress) {
            keyPressEvent(static_cast<QKeyEvent *>(event));
            return true;
        }
    }
    return QWidget::event(event);
}

void RecorderView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette &pal = palette();
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath path;
    path.addRoundedRect(frame, 6, 6);
    painter.fillPath(path, pal.color(QPalette::Base));
    painter.setPen(QPen(m_recording ? pal.color(QPalette::Highlight) : pal.color(QPalette::Mid), 1));
    painter.drawPath(path);

    QFont font = this->font();
    font.setPointSizeF(10); // the desktop's 13-pixel label at 96 dpi
    font.setWeight(m_recording ? QFont::Normal : QFont::DemiBold);
    painter.setFont(font);
    painter.setPen(m_recording ? pal.color(QPalette::PlaceholderText) : pal.color(QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignCenter, labelText());
}

void RecorderView::mousePressEvent(QMouseEvent *event)
{
    setFocus(Qt::MouseFocusReason);
    event->accept();
}

void RecorderView::focusInEvent(QFocusEvent *event)
{
    QWidget::focusInEvent(event);
    setRecording(true);
}

void RecorderView::focusOutEvent(QFocusEvent *event)
{
    QWidget::focusOutEvent(event);
    setRecording(false);
}

void RecorderView::setRecording(bool recording)
{
    if (recording == m_recording)
        return;
    m_recording = recording;
    setProperty(listeningProperty, recording);
    // Holding the keyboard keeps the desktop's grabs, glimpso's own among
    // them, from taking the combination being recorded.
    if (recording && isVisible())
        grabKeyboard();
    else if (!recording)
        releaseKeyboard();
    update();
}

void RecorderView::keyPressEvent(QKeyEvent *event)
{
    event->accept();
    if (!m_recording || isModifierKey(event->key()))
        return;
    std::optional<Hotkey> pressed;
    if (keyCodeForScanCode) {
        if (const auto code = keyCodeForScanCode(event->nativeScanCode()))
            pressed = Hotkey::withModifiers(*code, event->modifiers());
    }
    if (!pressed)
        pressed = Hotkey::fromKeyEvent(event->key(), event->modifiers());

    if (event->key() == Qt::Key_Escape || (pressed && pressed->keyCode == escapeCode)) {
        capture(Hotkey::unassigned());
        return;
    }
    if (!pressed) {
        // A key the shortcut table has no code for cannot be stored.
        beep();
        return;
    }
    const uint64_t flags = pressed->modifierFlagsRaw & Hotkey::deviceIndependentMask;
    if (!m_allowsBareKey && flags == 0) {
        beep();
        return;
    }
    capture(Hotkey { pressed->keyCode, flags });
}

void RecorderView::capture(const Hotkey &hotkey)
{
    m_hotkey = hotkey;
    update();
    if (onCapture)
        onCapture(hotkey);
    clearFocus();
    // clearFocus does nothing to a window without focus (offscreen, tests):
    // stop listening all the same.
    setRecording(false);
}

void RecorderView::beep()
{
    if (onBeep)
        onBeep();
    else
        QApplication::beep();
}
