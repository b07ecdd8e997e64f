#pragma once

#include "appui/FilledButtonStyle.h"

// The button that does what a page is for ("Test upload", "Send"): white
// text on the accent colour.
class PrimaryButtonStyle : public FilledButtonStyle
{
    Q_OBJECT

public:
    explicit PrimaryButtonStyle(qreal height = 28, qreal fontSize = 0);

    QColor fill() const override;
    QColor ink() const override;
};
