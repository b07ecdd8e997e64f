#include "appui/FilledButtonStyle.h"

#include "appui/Theme.h"

#include <QPainter>
#include <QPushButton>
#include <QStyleOptionButton>

#include <cmath>

namespace {

constexpr qreal horizontalPadding = 14;
constexpr qreal cornerRadius = 7;
constexpr qreal disabledOpacity = 0.45;
constexpr int pressedDarkness = 115;

} // namespace

FilledButtonStyle::FilledButtonStyle(qreal height, qreal fontSize, QFont::Weight weight)
    : m_height(height)
    , m_fontSize(fontSize)
    , m_weight(weight)
{
}

QFont FilledButtonStyle::font() const
{
    QFont font = Theme::body();
    if (m_fontSize > 0)
        font.setPointSizeF(m_fontSize);
    font.setWeight(m_weight);
    return font;
}

void FilledButtonStyle::apply(QPushButton *button)
{
    setParent(button);
    button->setStyle(this);
    button->setFont(font());
    button->setAttribute(Qt::WA_Hover);
    button->setCursor(Qt::PointingHandCursor);
}

void FilledButtonStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                                    const QWidget *widget) const
{
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    if (element != CE_PushButton || !button) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    const bool enabled = option->state & State_Enabled;
    const bool pressed = option->state & (State_Sunken | State_On);
    QColor background = fill();
    if (pressed)
        background = background.darker(pressedDarkness);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (!enabled)
        painter->setOpacity(disabledOpacity);
    painter->setPen(Qt::NoPen);
    painter->setBrush(background);
    painter->drawRoundedRect(QRectF(option->rect), cornerRadius, cornerRadius);
    if ((option->state & State_HasFocus) && (option->state & State_KeyboardFocusChange)) {
        painter->setBrush(Qt::NoBrush);
        painter->setPen(QPen(Theme::color(Theme::Color::accent), 2));
        painter->drawRoundedRect(QRectF(option->rect).adjusted(1, 1, -1, -1), cornerRadius - 1, cornerRadius - 1);
    }
    painter->setPen(ink());
    painter->drawText(option->rect, Qt::AlignCenter | Qt::TextShowMnemonic, button->text);
    painter->restore();
}

QSize FilledButtonStyle::sizeFromContents(ContentsType type, const QStyleOption *option,
                                          const QSize &contentsSize, const QWidget *widget) const
{
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    if (type != CT_PushButton || !button)
        return QProxyStyle::sizeFromContents(type, option, contentsSize, widget);
    const QFontMetricsF metrics(widget ? widget->font() : font());
    const qreal width = metrics.horizontalAdvance(button->text) + horizontalPadding * 2;
    return {int(std::ceil(std::max(width, m_height * 2))), int(std::ceil(m_height))};
}
