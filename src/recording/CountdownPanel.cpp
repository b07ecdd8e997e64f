#include "recording/CountdownPanel.h"

#include "recording/FloatingPanel.h"

#include <QPainter>
#include <QRegion>

CountdownPanel::CountdownPanel(bool translucent, QWidget *parent) : QWidget(parent), m_translucent(translucent)
{
    FloatingPanel::prepare(this, QStringLiteral("glimpso countdown"), {true, translucent});
    resize(side, side);
    if (!translucent)
        setMask(QRegion(0, 0, side, side, QRegion::Ellipse));
}

void CountdownPanel::showCount(const QRectF &area, int n)
{
    m_count = n;
    const QPointF centre = area.center();
    setGeometry(FloatingPanel::qtGeometry(QRectF(centre.x() - side / 2.0, centre.y() - side / 2.0, side, side)));
    update();
    show();
}

void CountdownPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_translucent) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.setBrush(QColor(0, 0, 0, int(0.55 * 255)));
    } else {
        // Cut to the disc; without a compositor the disc is opaque.
        painter.fillRect(rect(), QColor(28, 28, 30));
        painter.setBrush(QColor(28, 28, 30));
    }
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(rect());
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(64);
    painter.setFont(font);
    painter.setPen(Qt::white);
    // The label's frame: 22 points from the bottom, 76 high, in a y-down view.
    painter.drawText(QRect(0, side - 22 - 76, side, 76), Qt::AlignCenter, QString::number(m_count));
}
