#include "appui/SettingsSidebarItem.h"

#include "appui/IconTile.h"
#include "appui/Theme.h"

#include <QPainter>

namespace {

constexpr int itemHeight = 30;
constexpr int padding = 8;
constexpr qreal tileSide = 20;
constexpr qreal tileSymbol = 12;
constexpr qreal radius = 7;

} // namespace

SettingsSidebarItem::SettingsSidebarItem(const SettingsPage &page, QWidget *parent)
    : QAbstractButton(parent)
    , m_pageId(page.id)
    , m_symbol(page.symbol)
    , m_tile(page.tile)
{
    setText(page.title);
    setCheckable(true);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus);
    setFont(Theme::body());
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QColor SettingsSidebarItem::fillColor() const
{
    // On the light sidebar a white card stands out; on the dark one the raised control does.
    if (isChecked())
        return Theme::color(Theme::isDark() ? Theme::Color::control : Theme::Color::card);
    if (underMouse())
        return Theme::color(Theme::Color::hairline);
    return Qt::transparent;
}

QSize SettingsSidebarItem::sizeHint() const
{
    const int textWidth = fontMetrics().horizontalAdvance(text());
    return {padding * 3 + int(tileSide) + textWidth, itemHeight};
}

void SettingsSidebarItem::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fillColor());
    painter.drawRoundedRect(QRectF(rect()), radius, radius);

    const QRectF tileRect(padding, (height() - tileSide) / 2, tileSide, tileSide);
    IconTile::paint(painter, tileRect, m_symbol, m_tile, tileSymbol);

    const qreal textLeft = tileRect.right() + padding;
    painter.setPen(Theme::color(Theme::Color::ink));
    painter.setFont(font());
    painter.drawText(QRectF(textLeft, 0, width() - textLeft - padding, height()), Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text(), Qt::ElideRight, int(width() - textLeft - padding)));
}
