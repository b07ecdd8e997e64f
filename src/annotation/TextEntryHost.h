#pragma once

#include <QRectF>

namespace glimpso {

class TextEntryField;

// The view that can hold a text field over the canvas. It makes the field and
// the frame with handles around it, gives it the keyboard, and takes both away
// again. The field it returns stays valid until closeField.
class TextEntryHost {
public:
    virtual ~TextEntryHost() = default;

    // Opens an empty field at `localFrame` (the view's coordinates) with the
    // keyboard focus.
    virtual TextEntryField *openField(const QRectF &localFrame) = 0;
    // Removes the field and its frame, and gives the keyboard back to the view.
    virtual void closeField(TextEntryField *field) = 0;
};

} // namespace glimpso
