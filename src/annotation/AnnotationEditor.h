#pragma once

#include "annotation/Annotation.h"
#include "annotation/AnnotationSurface.h"
#include "annotation/AnnotationToolbar.h"
#include "annotation/EditorAction.h"
#include "annotation/Tool.h"
#include "settings/Hotkey.h"

#include <QList>
#include <QPointF>
#include <QRectF>

#include <functional>
#include <optional>

namespace glimpso {

// A turn of the scroll wheel or a touchpad swipe.
struct ScrollInput {
    QPointF delta;
    bool precise = false;
};

// The drawing state machine shared by the overlay and the editor window.
// This first cut draws nothing: it declines every press, so a selection can
// be made and adjusted, and turns Return into a copy.
class AnnotationEditor
{
public:
    AnnotationEditor() = default;

    void setSurface(AnnotationSurface *surface) { m_surface = surface; }
    void setToolbar(AnnotationToolbar *toolbar) { m_toolbar = toolbar; }
    void setCanvas(const QRectF &canvas) { m_canvas = canvas; }
    QRectF canvas() const { return m_canvas; }
    void setOnOutput(std::function<void(const EditorAction &)> onOutput) { m_onOutput = std::move(onOutput); }
    void setOnToolChange(std::function<void(Tool)> onToolChange) { m_onToolChange = std::move(onToolChange); }

    Tool currentTool() const { return m_tool; }
    void setCurrentTool(Tool tool);

    bool mouseDown(QPointF) { return false; }
    bool mouseDragged(QPointF, Qt::KeyboardModifiers) { return false; }
    bool mouseUp(QPointF) { return false; }
    bool keyDown(const Hotkey &key, const QString &text = {});
    bool scrollWheel(const ScrollInput &) { return false; }
    void update(QPointF, bool) {}
    std::optional<QPointF> pencilLastPoint() const { return std::nullopt; }
    bool strokeInProgress() const { return false; }
    void setLastMouseLocation(QPointF point) { m_lastMouse = point; }

    void handleToolbarAction(const EditorAction &action);
    void syncTextOptions() {}
    bool hasTextField() const { return false; }
    void endTextEdit() {}
    bool hasSelection() const { return false; }
    void clearSelection() {}
    void commitPendingText() {}
    bool scrollSizesSelection() const { return false; }
    QList<CursorRect> cursorRects() const { return {}; }
    QList<Annotation> annotations() const { return {}; }
    QList<Annotation> annotationsInImageSpace(const QRectF &) const { return {}; }

private:
    AnnotationSurface *m_surface = nullptr;
    AnnotationToolbar *m_toolbar = nullptr;
    QRectF m_canvas;
    std::function<void(const EditorAction &)> m_onOutput;
    std::function<void(Tool)> m_onToolChange;
    Tool m_tool = Tool::none;
    QPointF m_lastMouse;
};

} // namespace glimpso
