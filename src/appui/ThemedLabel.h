#pragma once

#include "appui/Theme.h"

#include <QLabel>

// A label in one of the theme's inks, which it takes again whenever the
// palette around it changes, as it does with the appearance.
class ThemedLabel : public QLabel
{
    Q_OBJECT

public:
    ThemedLabel(const QString &text, Theme::Color ink, const QFont &font, QWidget *parent = nullptr);

    Theme::Color ink() const { return m_ink; }

protected:
    void changeEvent(QEvent *event) override;

private:
    void applyInk();

    Theme::Color m_ink;
    bool m_applying = false;
};
