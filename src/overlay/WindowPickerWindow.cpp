#include "overlay/WindowPickerWindow.h"

#include "overlay/WindowPicker.h"
#include "overlay/WindowPickerLook.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

WindowPickerWindow::WindowPickerWindow(WindowPicker &picker, const QRectF &frame, const QImage &picture,
                                       const DesktopSpace &space, const QColor &accent)
    : QWidget(nullptr,
              Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint),
      m_picker(picker),
      m_frame(frame),
      m_picture(picture),
      m_space(space),
      m_accent(accent),
      m_font(QFontDatabase::systemFont(QFontDatabase::GeneralFont))
{
    setWindowTitle(QStringLiteral("glimpso window picker"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    m_font.setPixelSize(13);
    m_font.setWeight(QFont::Medium);
    const QRect geometry = space.toQt(frame).toAlignedRect();
    m_qtOrigin = geometry.topLeft();
    setGeometry(geometry);
}

QPointF WindowPickerWindow::toLocal(const QPointF &global) const
{
    return m_space.toQt(global) - QPointF(m_qtOrigin);
}

QRectF WindowPickerWindow::toLocal(const QRectF &global) const
{
    return m_space.toQt(global).translated(-QPointF(m_qtOrigin));
}

QPointF WindowPickerWindow::toGlobal(const QPointF &local) const
{
    return m_space.toGlobal(local + QPointF(m_qtOrigin));
}

void WindowPickerWindow::drawPill(QPainter &painter, const QRectF &pill, const QString &text)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, int(0.65 * 255 + 0.5)));
    painter.drawRoundedRect(pill, pill.height() / 2.0, pill.height() / 2.0);
    painter.setPen(Qt::white);
    painter.drawText(pill.adjusted(12, 6, -12, -6), Qt::AlignLeft | Qt::AlignVCenter, text);
}

void WindowPickerWindow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds = rect();
    if (m_picture.isNull())
        painter.fillRect(bounds, Qt::black);
    else
        painter.drawImage(bounds, m_picture);

    const std::optional<WindowTarget> &hovered = m_picker.hovered();
    const QRectF hole = hovered ? toLocal(hovered->frame) : QRectF();
    QPainterPath veil;
    veil.setFillRule(Qt::OddEvenFill);
    veil.addRect(bounds);
    if (hovered)
        veil.addRoundedRect(hole, WindowPickerLook::holeRadius, WindowPickerLook::holeRadius);
    painter.fillPath(veil, QColor(0, 0, 0, int(WindowPickerLook::dimAlpha * 255 + 0.5)));

    painter.setFont(m_font);
    const QFontMetricsF metrics(m_font);
    if (hovered) {
        const double out = WindowPickerLook::outlineOutset;
        painter.setPen(QPen(m_accent, WindowPickerLook::outlineWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(hole.adjusted(-out, -out, out, out), WindowPickerLook::outlineRadius,
                                WindowPickerLook::outlineRadius);
        const QString label = WindowPickerLook::label(hovered->appName, hovered->frame.size());
        const QSizeF textSize(metrics.horizontalAdvance(label), metrics.height());
        drawPill(painter, WindowPickerLook::labelPill(textSize, hole, bounds.size()), label);
    }
    const QPointF pointer = toLocal(m_picker.pointer());
    if (bounds.contains(pointer)) {
        const QString hint = WindowPickerLook::hint(m_picker.transparentBackground());
        const QSizeF textSize(metrics.horizontalAdvance(hint), metrics.height());
        drawPill(painter, WindowPickerLook::hintPill(textSize, bounds.size()), hint);
    }
}

void WindowPickerWindow::mouseMoveEvent(QMouseEvent *event)
{
    m_picker.update(toGlobal(event->position()));
}

void WindowPickerWindow::mousePressEvent(QMouseEvent *event)
{
    m_picker.press(toGlobal(event->position()), event->modifiers());
}

void WindowPickerWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        m_picker.escape();
        return;
    }
    QWidget::keyPressEvent(event);
}
