#pragma once

#include "annotation/TextOptions.h"
#include "annotation/Tool.h"

#include <QColor>

#include <optional>

namespace glimpso {

// What a toolbar shows of the editor's state; the editor calls it when that
// state changes from elsewhere (a key, a scroll, a selection).
class AnnotationToolbar {
public:
    virtual ~AnnotationToolbar() = default;

    virtual void setSelectedTool(Tool tool) = 0;
    virtual void setSelectedColor(const QColor &color) = 0;
    // The text size and style control with these options; absent hides it.
    virtual void showTextOptions(const std::optional<TextOptions> &options) = 0;
};

} // namespace glimpso
