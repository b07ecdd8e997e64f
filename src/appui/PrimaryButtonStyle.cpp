#include "appui/PrimaryButtonStyle.h"

#include "appui/Theme.h"

PrimaryButtonStyle::PrimaryButtonStyle(qreal height, qreal fontSize)
    : FilledButtonStyle(height, fontSize, QFont::DemiBold)
{
}

QColor PrimaryButtonStyle::fill() const
{
    return Theme::color(Theme::Color::accent);
}

QColor PrimaryButtonStyle::ink() const
{
    return Qt::white;
}
