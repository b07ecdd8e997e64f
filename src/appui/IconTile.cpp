#include "appui/IconTile.h"

#include <QPaintDevice>
#include <QPainter>

#include <cmath>

namespace {

// The tile's corners are a quarter of its side, as app icons round theirs.
constexpr qreal cornerShare = 0.25;
constexpr qreal symbolStroke = 2.0;

} // namespace

IconTile::IconTile(Lucide symbol, const QColor &color, qreal size, qreal symbolSize, QWidget *parent)
    : QWidget(parent)
    , m_symbol(symbol)
    , m_color(color)
    , m_size(size)
    , m_symbolSize(symbolSize)
{
    setFixedSize(sizeHint());
}

QSize IconTile::sizeHint() const
{
    const int side = int(std::ceil(m_size));
    return {side, side};
}

void IconTile::paint(QPainter &painter, const QRectF &rect, Lucide symbol, const QColor &color, qreal symbolSize)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    const qreal radius = rect.width() * cornerShare;
    painter.drawRoundedRect(rect, radius, radius);
    const qreal ratio = painter.device() ? painter.device()->devicePixelRatioF() : 1.0;
    const QImage glyph = symbol.tinted(symbolSize, symbolStroke, Qt::white, ratio);
    QRectF glyphRect(QPointF(), QSizeF(symbolSize, symbolSize));
    glyphRect.moveCenter(rect.center());
    painter.drawImage(glyphRect, glyph);
    painter.restore();
}

void IconTile::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paint(painter, QRectF(0, 0, m_size, m_size), m_symbol, m_color, m_symbolSize);
}
