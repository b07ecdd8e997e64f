#include "toolbars/PillGroup.h"

#include "toolbars/ToolbarChrome.h"

#include <QHBoxLayout>
#include <QPainter>

PillGroup::PillGroup(QWidget *parent) : QWidget(parent)
{
    m_stack = new QHBoxLayout(this);
    m_stack->setContentsMargins(8, 2, 8, 2);
    m_stack->setSpacing(4);
}

void PillGroup::add(QWidget *view)
{
    m_stack->addWidget(view, 0, Qt::AlignVCenter);
}

void PillGroup::paintEvent(QPaintEvent *)
{
    // Colours are read at each paint, so an appearance change shows at once.
    const bool dark = ToolbarChrome::darkAppearance();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bar = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -1.5);
    // A soft shadow one point below.
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, int(0.08 * 255)));
    painter.drawRoundedRect(bar.translated(0, 1), 10, 10);
    QColor fill = dark ? QColor(255, 255, 255, int(0.1 * 255)) : QColor(Qt::white);
    QColor border = palette().color(QPalette::Mid);
    painter.setPen(QPen(border, 0.5));
    painter.setBrush(fill);
    painter.drawRoundedRect(bar, 10, 10);
}
