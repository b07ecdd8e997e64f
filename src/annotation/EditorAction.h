#pragma once

#include "annotation/TextOptions.h"
#include "annotation/Tool.h"

#include <QColor>
#include <QSize>
#include <QString>

#include <variant>

// What an overlay or editor control asks for. A tagged value: the cases
// without payload are plain kinds; the others carry their value.
class EditorAction
{
public:
    enum class Kind { selectTool, selectColor, setSize, setTextOptions, undo, redo, copy, save, upload, copyText, close };

    static EditorAction selectTool(glimpso::Tool tool) { return EditorAction(Kind::selectTool, tool); }
    static EditorAction selectColor(const QColor &colour) { return EditorAction(Kind::selectColor, colour); }
    static EditorAction setSize(const QSize &size) { return EditorAction(Kind::setSize, size); }
    static EditorAction setTextOptions(const glimpso::TextOptions &options) { return EditorAction(Kind::setTextOptions, options); }
    static EditorAction undo() { return EditorAction(Kind::undo, std::monostate{}); }
    static EditorAction redo() { return EditorAction(Kind::redo, std::monostate{}); }
    static EditorAction copy() { return EditorAction(Kind::copy, std::monostate{}); }
    static EditorAction save() { return EditorAction(Kind::save, std::monostate{}); }
    static EditorAction upload() { return EditorAction(Kind::upload, std::monostate{}); }
    static EditorAction copyText() { return EditorAction(Kind::copyText, std::monostate{}); }
    static EditorAction close() { return EditorAction(Kind::close, std::monostate{}); }

    Kind kind() const { return m_kind; }
    // The payload of the cases that have one.
    const std::variant<std::monostate, glimpso::Tool, QColor, QSize, glimpso::TextOptions> &payload() const { return m_payload; }
    // The case's name, for logs.
    QString description() const;

private:
    template <typename T>
    EditorAction(Kind kind, T payload) : m_kind(kind), m_payload(std::move(payload))
    {
    }

    Kind m_kind;
    std::variant<std::monostate, glimpso::Tool, QColor, QSize, glimpso::TextOptions> m_payload;
};
