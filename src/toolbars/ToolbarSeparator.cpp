#include "toolbars/ToolbarSeparator.h"

#include "toolbars/ChipPaint.h"

#include <QPainter>

ToolbarSeparator::ToolbarSeparator(QWidget *parent) : QWidget(parent)
{
    setFixedSize(1, 22);
    setTint(Qt::black);
}

void ToolbarSeparator::setTint(const QColor &tint)
{
    m_colour = ChipPaint::faded(tint, 0.25);
    update();
}

void ToolbarSeparator::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), m_colour);
}
