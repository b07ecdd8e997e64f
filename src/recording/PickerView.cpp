#include "recording/PickerView.h"

#include "recording/FloatingPanel.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QRegion>
#include <QTimer>
#include <QWindow>

Q_DECLARE_LOGGING_CATEGORY(lcRecording)

namespace {

QFont pillFont(const QFont &base)
{
    QFont font = base;
    font.setPixelSize(13);
    return font;
}

} // namespace

PickerView::PickerView(const QString &hint, bool translucent, OnDone onDone, QWidget *parent)
    : QWidget(parent), m_hint(hint), m_translucent(translucent), m_onDone(std::move(onDone))
{
    m_sinceMade.start();
    FloatingPanel::prepare(this, QStringLiteral("glimpso picker"), {false, translucent});
    // Unlike the other panels, the picker takes the keyboard: Escape is its.
    setWindowFlag(Qt::WindowDoesNotAcceptFocus, false);
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    setCursor(Qt::CrossCursor);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
}

PickerView::~PickerView()
{
    if (QWindow *window = windowHandle()) {
        window->setMouseGrabEnabled(false);
        window->setKeyboardGrabEnabled(false);
    }
}

QColor PickerView::dimColour()
{
    return QColor(0, 0, 0, int(0.25 * 255 + 0.5));
}

QColor PickerView::pillColour()
{
    return QColor(0, 0, 0, int(0.65 * 255 + 0.5));
}

QPointF PickerView::toView(QPointF qt) const
{
    return {qt.x(), height() - qt.y()};
}

QRectF PickerView::toQt(const QRectF &view) const
{
    return {view.x(), height() - view.y() - view.height(), view.width(), view.height()};
}

QRectF PickerView::sizePillQt(const QRectF &selection) const
{
    const QFontMetricsF metrics(pillFont(font()));
    const QString text = PickerDrag::sizeText(selection);
    return toQt(PickerDrag::sizePill(selection, QSizeF(metrics.horizontalAdvance(text), metrics.height())));
}

QRectF PickerView::hintPillQt() const
{
    const QFontMetricsF metrics(pillFont(font()));
    const QString text = PickerDrag::hintText(m_hint);
    return toQt(PickerDrag::hintPill(QSizeF(size()), QSizeF(metrics.horizontalAdvance(text), metrics.height())));
}

void PickerView::showEvent(QShowEvent *)
{
    updateShape();
    takeInput(0);
}

bool PickerView::event(QEvent *event)
{
    if (event->type() == QEvent::UpdateRequest && m_exposedAfterMs < 0) {
        m_exposedAfterMs = m_sinceMade.elapsed();
        qCInfo(lcRecording, "picker shown in %lld ms", qlonglong(m_exposedAfterMs));
    }
    return QWidget::event(event);
}

void PickerView::takeInput(int attempt)
{
    // The grabs fail until the server has mapped the window; try again shortly.
    QWindow *window = windowHandle();
    if (!window || m_done)
        return;
    activateWindow();
    setFocus(Qt::ActiveWindowFocusReason);
    // Only a display server's own platform can grab.
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    const bool pointer = window->setMouseGrabEnabled(true);
    const bool keys = window->setKeyboardGrabEnabled(true);
    if ((pointer && keys) || attempt >= 50) {
        if (!pointer || !keys)
            qCInfo(lcRecording, "picker: pointer grab %d, keyboard grab %d", pointer, keys);
        return;
    }
    QTimer::singleShot(10, this, [this, attempt] { takeInput(attempt + 1); });
}

void PickerView::changed()
{
    updateShape();
    update();
}

void PickerView::updateShape()
{
    if (m_translucent)
        return;
    // The dim as thin lines, cut open where the selection is; then the outline and the pills.
    QRegion shape;
    for (int y = 0; y < height(); y += lineSpacing)
        shape += QRect(0, y, width(), 1);
    if (const std::optional<QRectF> selection = m_drag.selection()) {
        const QRect hole = toQt(*selection).toAlignedRect();
        shape -= hole;
        shape += QRegion(hole.adjusted(-2, -2, 2, 2)) - QRegion(hole);
        shape += sizePillQt(*selection).toAlignedRect();
    }
    shape += hintPillQt().toAlignedRect();
    setMask(shape);
}

void PickerView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const std::optional<QRectF> selection = m_drag.selection();
    if (m_translucent) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        QPainterPath dim;
        dim.setFillRule(Qt::OddEvenFill);
        dim.addRect(QRectF(rect()));
        if (selection)
            dim.addRect(toQt(*selection));
        painter.fillRect(rect(), Qt::transparent);
        painter.fillPath(dim, dimColour());
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    } else {
        // Only the lines of the shape show: they are the dim.
        painter.fillRect(rect(), Qt::black);
    }
    painter.setRenderHint(QPainter::Antialiasing);
    const QFont font = pillFont(this->font());
    painter.setFont(font);
    const auto pill = [&](const QRectF &frame, const QString &text) {
        painter.setPen(Qt::NoPen);
        QColor colour = pillColour();
        if (!m_translucent)
            colour.setAlpha(255);
        painter.setBrush(colour);
        painter.drawRoundedRect(frame, frame.height() / 2, frame.height() / 2);
        painter.setPen(Qt::white);
        painter.drawText(frame.adjusted(12, 6, -12, -6), Qt::AlignLeft | Qt::AlignVCenter, text);
    };
    if (selection) {
        const QRectF hole = toQt(*selection);
        QPen outline(QColor(255, 59, 48), 2);
        outline.setJoinStyle(Qt::MiterJoin);
        painter.setPen(outline);
        painter.setBrush(Qt::NoBrush);
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.drawRect(hole.adjusted(-1, -1, 1, 1));
        painter.setRenderHint(QPainter::Antialiasing);
        pill(sizePillQt(*selection), PickerDrag::sizeText(*selection));
    }
    pill(hintPillQt(), PickerDrag::hintText(m_hint));
}

void PickerView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || m_done)
        return;
    m_drag.press(toView(event->position()));
    changed();
}

void PickerView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_drag.isDragging() || m_done)
        return;
    m_drag.drag(toView(event->position()));
    changed();
}

void PickerView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_drag.isDragging() || m_done)
        return;
    const std::optional<QRectF> chosen = m_drag.release(toView(event->position()));
    if (!chosen) {
        // A short drag starts over; the picker stays.
        changed();
        return;
    }
    m_done = true;
    if (m_onDone)
        m_onDone(chosen);
}

void PickerView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape || m_done)
        return QWidget::keyPressEvent(event);
    m_done = true;
    if (m_onDone)
        m_onDone(std::nullopt);
}
