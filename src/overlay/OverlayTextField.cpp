#include "overlay/OverlayTextField.h"

#include "annotation/TextLook.h"
#include "overlay/EmojiPicker.h"
#include "overlay/TextEditBox.h"

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPalette>
#include <QWheelEvent>

#include <algorithm>

OverlayTextField::OverlayTextField(QWidget *parent, Callbacks callbacks, const QColor &accent)
    : QLineEdit(parent), m_callbacks(std::move(callbacks))
{
    QLineEdit::setFrame(false);
    setAttribute(Qt::WA_InputMethodEnabled);
    setTextMargins(0, 0, 0, 0);
    connect(this, &QLineEdit::textChanged, this, [this] {
        if (m_callbacks.changed)
            m_callbacks.changed();
    });
    if (!parent)
        return;
    m_box = new TextEditBox(this, accent);
    m_box->onMove = [this](QPointF travel) {
        if (m_callbacks.moved)
            m_callbacks.moved(travel);
    };
    m_box->onResizeBegin = [this] {
        if (m_callbacks.resizeBegan)
            m_callbacks.resizeBegan();
    };
    m_box->onResize = [this](QSizeF travel, QPointF pointer) {
        if (m_callbacks.resized)
            m_callbacks.resized(travel, pointer);
    };
    m_box->onEmoji = [this] {
        setFocus(Qt::OtherFocusReason);
        toggleEmojiPicker();
    };
    m_box->show();
}

OverlayTextField::~OverlayTextField()
{
    // The frame and the picker live beside the field, in its parent.
    delete m_box;
    delete m_picker;
}

TextEditBox *OverlayTextField::box() const
{
    return m_box;
}

EmojiPicker *OverlayTextField::emojiPicker() const
{
    return m_picker;
}

QString OverlayTextField::shownText() const
{
    if (m_preedit.isEmpty())
        return text();
    QString shown = text();
    shown.insert(cursorPosition(), m_preedit);
    return shown;
}

void OverlayTextField::setFrame(const QRectF &localFrame)
{
    setGeometry(localFrame.toAlignedRect());
    if (m_box)
        m_box->follow();
}

QFont OverlayTextField::typingFont(const glimpso::TextOptions &options, int dotsPerInch)
{
    // The look's font is sized for a device of 72 dots per inch; on this
    // window it must stand as many points tall as the committed text will.
    QFont face = glimpso::TextLook::font(options);
    face.setPointSizeF(options.size * 72.0 / std::max(dotsPerInch, 1));
    return face;
}

void OverlayTextField::setLook(const glimpso::TextOptions &options, const QColor &color)
{
    setFont(typingFont(options, logicalDpiY()));
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

void OverlayTextField::dismiss()
{
    for (QWidget *widget : {static_cast<QWidget *>(this), static_cast<QWidget *>(m_box.data()),
                            static_cast<QWidget *>(m_picker.data())}) {
        if (widget) {
            widget->hide();
            widget->deleteLater();
        }
    }
}

void OverlayTextField::toggleEmojiPicker()
{
    if (m_picker && m_picker->isVisible()) {
        m_picker->hide();
        return;
    }
    if (!m_picker) {
        m_picker = new EmojiPicker(parentWidget());
        m_picker->onPick = [this](const QString &emoji) {
            insertAtCaret(emoji);
            m_picker->hide();
        };
    }
    const QRectF anchor = m_box ? QRectF(m_box->geometry()) : QRectF(geometry());
    m_picker->showNear(anchor);
}

void OverlayTextField::insertAtCaret(const QString &emoji)
{
    insert(emoji);
    setFocus(Qt::OtherFocusReason);
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

void OverlayTextField::inputMethodEvent(QInputMethodEvent *event)
{
    const QString before = m_preedit;
    m_preedit = event->preeditString();
    QLineEdit::inputMethodEvent(event);
    // A composition that changes only what is being composed changes no
    // text; the field still grows with it.
    if (m_preedit != before && m_callbacks.changed)
        m_callbacks.changed();
}

void OverlayTextField::wheelEvent(QWheelEvent *event)
{
    // The wheel sizes the text: it belongs to the overlay under the field,
    // however the event came.
    if (!parentWidget())
        return QLineEdit::wheelEvent(event);
    const QPointF at = mapToParent(event->position());
    QWheelEvent forwarded(at, event->globalPosition(), event->pixelDelta(), event->angleDelta(), event->buttons(),
                          event->modifiers(), event->phase(), event->inverted(), event->source());
    QCoreApplication::sendEvent(parentWidget(), &forwarded);
    event->setAccepted(forwarded.isAccepted());
}
