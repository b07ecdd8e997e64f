#include "annotation/EditorAction.h"

QString EditorAction::description() const
{
    switch (m_kind) {
    case Kind::selectTool: return QStringLiteral("selectTool");
    case Kind::selectColor: return QStringLiteral("selectColor");
    case Kind::setSize: return QStringLiteral("setSize");
    case Kind::setTextOptions: return QStringLiteral("setTextOptions");
    case Kind::undo: return QStringLiteral("undo");
    case Kind::redo: return QStringLiteral("redo");
    case Kind::copy: return QStringLiteral("copy");
    case Kind::save: return QStringLiteral("save");
    case Kind::upload: return QStringLiteral("upload");
    case Kind::copyText: return QStringLiteral("copyText");
    case Kind::close: return QStringLiteral("close");
    }
    return {};
}
