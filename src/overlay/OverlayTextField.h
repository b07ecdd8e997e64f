#pragma once

#include "annotation/TextEntryField.h"

#include <QColor>
#include <QLineEdit>
#include <QPointer>

#include <functional>

class EmojiPicker;
class TextEditBox;

// The borderless field a text mark is typed into on the overlay, with its
// frame (TextEditBox) and the emoji picker beside it in the same parent. It
// types at the caret in the mark's own font and colour, so what is typed
// stands where the committed text will; Return commits, Escape drops. Input
// methods compose in it as in any Qt line edit, and what is being composed
// counts when the field grows to fit.
class OverlayTextField : public QLineEdit, public glimpso::TextEntryField
{
    Q_OBJECT

public:
    struct Callbacks {
        std::function<void()> changed;
        std::function<void()> commit;
        std::function<void()> cancel;
        // The frame's drags, in the parent's coordinates (see TextEditBox).
        std::function<void(QPointF travel)> moved;
        std::function<void()> resizeBegan;
        std::function<void(QSizeF travel, QPointF pointer)> resized;
    };

    OverlayTextField(QWidget *parent, Callbacks callbacks, const QColor &accent = QColor(0, 122, 255));
    ~OverlayTextField() override;

    // TextEntryField
    QString text() const override { return QLineEdit::text(); }
    QString shownText() const override;
    void setFrame(const QRectF &localFrame) override;
    void setLook(const glimpso::TextOptions &options, const QColor &color) override;

    // Hides the field, its frame and the picker, and lets them go once this
    // turn of the event loop is over (the caller may be the field itself).
    void dismiss();
    // Opens the picker, or closes it when open.
    void toggleEmojiPicker();
    // Types `emoji` at the caret, as if typed.
    void insertAtCaret(const QString &emoji);

    // The look's font at the size that makes it `options.size` points tall
    // on a window of `dotsPerInch`.
    static QFont typingFont(const glimpso::TextOptions &options, int dotsPerInch);

    TextEditBox *box() const;
    EmojiPicker *emojiPicker() const;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    Callbacks m_callbacks;
    QPointer<TextEditBox> m_box;
    QPointer<EmojiPicker> m_picker;
    QString m_preedit;
};
