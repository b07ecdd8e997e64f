#include "appui/RowDivider.h"

#include "appui/Theme.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>

RowDivider::RowDivider(int inset, QWidget *parent)
    : QWidget(parent)
    , m_inset(inset)
{
    setFixedHeight(1);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void RowDivider::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    // The engine's device is what the pixels land in, the window's backing
    // store or an image this is rendered into, and knows their scale.
    const qreal line = thickness(painter.paintEngine()->paintDevice()->devicePixelRatioF());
    painter.fillRect(QRectF(m_inset, 0, width() - m_inset, line), Theme::color(Theme::Color::hairline));
}
