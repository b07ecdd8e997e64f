#include "annotation/AnnotationEditor.h"

namespace glimpso {

void AnnotationEditor::setCurrentTool(Tool tool)
{
    if (tool == m_tool)
        return;
    m_tool = tool;
    if (m_onToolChange)
        m_onToolChange(tool);
}

bool AnnotationEditor::keyDown(const Hotkey &key, const QString &)
{
    constexpr uint16_t returnCode = 36;
    if (key.keyCode == returnCode && key.modifierFlagsRaw == 0) {
        if (m_onOutput)
            m_onOutput(EditorAction::copy());
        return true;
    }
    return false;
}

void AnnotationEditor::handleToolbarAction(const EditorAction &action)
{
    switch (action.kind()) {
    case EditorAction::Kind::copy:
    case EditorAction::Kind::save:
    case EditorAction::Kind::upload:
    case EditorAction::Kind::copyText:
    case EditorAction::Kind::close:
        if (m_onOutput)
            m_onOutput(action);
        break;
    case EditorAction::Kind::selectTool:
        setCurrentTool(std::get<Tool>(action.payload()));
        break;
    default:
        break;
    }
}

} // namespace glimpso
