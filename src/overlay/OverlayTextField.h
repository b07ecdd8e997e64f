#pragma once

#include "annotation/TextEntryField.h"

#include <QLineEdit>

#include <functional>

// The borderless field a text mark is typed into on the overlay. It types at
// the caret in the mark's own font and colour, so what is typed stands where
// the committed text will; Return commits, Escape drops. Input methods work
// as in any Qt line edit.
class OverlayTextField : public QLineEdit, public glimpso::TextEntryField
{
    Q_OBJECT

public:
    struct Callbacks {
        std::function<void()> changed;
        std::function<void()> commit;
        std::function<void()> cancel;
    };

    OverlayTextField(QWidget *parent, Callbacks callbacks);

    // TextEntryField
    QString text() const override { return QLineEdit::text(); }
    void setFrame(const QRectF &localFrame) override;
    void setLook(const glimpso::TextOptions &options, const QColor &color) override;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    Callbacks m_callbacks;
};
