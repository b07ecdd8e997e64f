#include "appui/ThemedLabel.h"

#include <QEvent>

ThemedLabel::ThemedLabel(const QString &text, Theme::Color ink, const QFont &font, QWidget *parent)
    : QLabel(text, parent)
    , m_ink(ink)
{
    setFont(font);
    applyInk();
}

void ThemedLabel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange && !m_applying)
        applyInk();
    QLabel::changeEvent(event);
}

void ThemedLabel::applyInk()
{
    // Setting the palette sends a palette change of its own; it is not a new appearance.
    m_applying = true;
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, Theme::color(m_ink));
    setPalette(palette);
    m_applying = false;
}
