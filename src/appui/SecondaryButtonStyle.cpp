#include "appui/SecondaryButtonStyle.h"

#include "appui/Theme.h"

SecondaryButtonStyle::SecondaryButtonStyle(qreal height, qreal fontSize, std::optional<QColor> tint,
                                           std::optional<QColor> ink, QFont::Weight weight)
    : FilledButtonStyle(height, fontSize, weight)
    , m_tint(std::move(tint))
    , m_ink(std::move(ink))
{
}

QColor SecondaryButtonStyle::fill() const
{
    return m_tint.value_or(Theme::color(Theme::Color::control));
}

QColor SecondaryButtonStyle::ink() const
{
    return m_ink.value_or(Theme::color(Theme::Color::ink));
}
