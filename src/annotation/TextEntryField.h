#pragma once

#include "annotation/TextOptions.h"

#include <QColor>
#include <QRectF>
#include <QString>

namespace glimpso {

// The live single-line field a text annotation is typed into, as the editor
// sees it. The host owns it (a widget on screen, a fake in tests); the editor
// only places it, styles it and reads it back.
class TextEntryField {
public:
    virtual ~TextEntryField() = default;

    virtual QString text() const = 0;
    // What the field shows: the text with whatever an input method is still
    // composing at the caret. The field grows to fit this.
    virtual QString shownText() const { return text(); }
    // Where the field stands, in the host view's own coordinates.
    virtual void setFrame(const QRectF &localFrame) = 0;
    // The font of the options as TextLook picks it; for the background style a
    // filled background in `color` with letters in its contrast colour, for the
    // others no background and letters in `color`.
    virtual void setLook(const TextOptions &options, const QColor &color) = 0;
};

} // namespace glimpso
