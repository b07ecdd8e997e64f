#include "overlay/OverlayTextField.h"

#include "annotation/TextLook.h"

#include <QKeyEvent>
#include <QPalette>

OverlayTextField::OverlayTextField(QWidget *parent, Callbacks callbacks)
    : QLineEdit(parent), m_callbacks(std::move(callbacks))
{
    QLineEdit::setFrame(false);
    setAttribute(Qt::WA_InputMethodEnabled);
    setTextMargins(0, 0, 0, 0);
    connect(this, &QLineEdit::textChanged, this, [this] {
        if (m_callbacks.changed)
            m_callbacks.changed();
    });
}

void OverlayTextField::setFrame(const QRectF &localFrame)
{
    setGeometry(localFrame.toAlignedRect());
}

void OverlayTextField::setLook(const glimpso::TextOptions &options, const QColor &color)
{
    setFont(glimpso::TextLook::font(options));
    QPalette look = palette();
    // The plate of the background style shows while typing; the other styles
    // type straight onto the frozen screen.
    const bool plate = options.style == glimpso::TextStyle::background;
    look.setColor(QPalette::Base, plate ? color : QColor(Qt::transparent));
    look.setColor(QPalette::Text, plate ? glimpso::TextLook::contrast(color) : color);
    setPalette(look);
    setAutoFillBackground(plate);
    setAttribute(Qt::WA_TranslucentBackground, !plate);
}

void OverlayTextField::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_callbacks.commit)
            m_callbacks.commit();
        return;
    case Qt::Key_Escape:
        if (m_callbacks.cancel)
            m_callbacks.cancel();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}
