#pragma once

#include "annotation/TextOptions.h"
#include "annotation/Tool.h"

#include <QColor>

#include <optional>

namespace glimpso {

// What the editor tells the toolbar to reflect.
class AnnotationToolbar
{
public:
    virtual ~AnnotationToolbar() = default;
    virtual void setSelectedTool(Tool tool) = 0;
    virtual void setSelectedColor(const QColor &colour) = 0;
    virtual void showTextOptions(const std::optional<TextOptions> &options) = 0;
};

} // namespace glimpso
