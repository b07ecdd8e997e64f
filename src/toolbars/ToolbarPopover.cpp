#include "toolbars/ToolbarPopover.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

ToolbarPopover::ToolbarPopover(QWidget *parent) : QFrame(parent)
{
    setAttribute(Qt::WA_StyledBackground, false);
    setCursor(Qt::ArrowCursor);
    hide();
}

ToolbarPopover::~ToolbarPopover()
{
    if (m_open)
        qApp->removeEventFilter(this);
}

void ToolbarPopover::showBelow(QWidget *anchor)
{
    QWidget *window = anchor->window();
    if (parentWidget() != window)
        setParent(window);
    adjustSize();
    const QPoint below = anchor->mapTo(window, QPoint(0, anchor->height() + 4));
    QPoint origin(below.x() + (anchor->width() - width()) / 2, below.y());
    // Near the bottom of the display the panel opens above its control.
    if (origin.y() + height() > window->height())
        origin.setY(anchor->mapTo(window, QPoint(0, 0)).y() - 4 - height());
    origin.setX(std::clamp(origin.x(), 4, std::max(4, window->width() - width() - 4)));
    move(origin);
    show();
    raise();
    if (!m_open) {
        m_open = true;
        qApp->installEventFilter(this);
    }
}

void ToolbarPopover::dismiss()
{
    if (!m_open)
        return;
    m_open = false;
    qApp->removeEventFilter(this);
    hide();
    if (onClose)
        onClose();
}

bool ToolbarPopover::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        auto *target = qobject_cast<QWidget *>(watched);
        if (target && target != this && !isAncestorOf(target) && target->window() == window()) {
            dismiss();
            // The press that closes the panel does nothing else.
            return true;
        }
    } else if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        dismiss();
        return true;
    }
    return QFrame::eventFilter(watched, event);
}

void ToolbarPopover::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor fill = palette().color(QPalette::Window);
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlphaF(0.18f);
    painter.setPen(QPen(edge, 1));
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
}
