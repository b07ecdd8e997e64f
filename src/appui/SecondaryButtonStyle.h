#pragma once

#include "appui/FilledButtonStyle.h"

#include <optional>

// Any other button ("Reset", "Clear copied text"): the ink colour on the
// control colour, unless a tint and an ink of its own are given (a danger
// button is the danger colour on a light tint of it).
class SecondaryButtonStyle : public FilledButtonStyle
{
    Q_OBJECT

public:
    explicit SecondaryButtonStyle(qreal height = 28, qreal fontSize = 0, std::optional<QColor> tint = {},
                                  std::optional<QColor> ink = {}, QFont::Weight weight = QFont::Medium);

    QColor fill() const override;
    QColor ink() const override;

private:
    std::optional<QColor> m_tint;
    std::optional<QColor> m_ink;
};
