#pragma once

#include "annotation/AnnotationParts.h"

namespace glimpso {

class TextEntryHost;

// Where a text field may open near a point: the view that holds it, and how a
// rectangle of the editor's coordinates maps to that view's own (the on-screen
// host offsets by its display's origin and turns y down).
struct TextHost {
    TextEntryHost *host = nullptr;
    RectMap toLocal;
};

} // namespace glimpso
