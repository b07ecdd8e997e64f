#pragma once

#include "appui/Lucide.h"

#include <QColor>
#include <QWidget>

// A white symbol on a rounded square of colour: the mark of a settings page in
// the sidebar and of a row in a group.
class IconTile : public QWidget
{
    Q_OBJECT

public:
    IconTile(Lucide symbol, const QColor &color, qreal size = 24, qreal symbolSize = 14, QWidget *parent = nullptr);

    Lucide symbol() const { return m_symbol; }
    QColor color() const { return m_color; }
    qreal tileSize() const { return m_size; }
    qreal symbolSize() const { return m_symbolSize; }

    // Draws a tile into `rect` with any painter, so lists can draw it without a widget.
    static void paint(QPainter &painter, const QRectF &rect, Lucide symbol, const QColor &color, qreal symbolSize);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Lucide m_symbol;
    QColor m_color;
    qreal m_size;
    qreal m_symbolSize;
};
