#pragma once

#include "annotation/AnnotationToolbar.h"
#include "annotation/EditorAction.h"

#include <QWidget>

#include <functional>
#include <map>
#include <optional>

class AccentButton;
class AppSettings;
class ColorChip;
class PillGroup;
class QHBoxLayout;
class TextOptionsControl;
class ToolbarChip;

// The editor window's toolbar in its title area: the tools, text options,
// colour, undo and redo on the leading side, centred on the canvas when room
// allows; copy, upload, copy text and "Save" on the trailing side.
class HeaderToolbar : public QWidget, public glimpso::AnnotationToolbar
{
    Q_OBJECT

public:
    static constexpr int outerMargin = 12;
    static constexpr int stackSpacing = 8;

    HeaderToolbar(std::function<void(const EditorAction &)> handler, AppSettings &settings, QWidget *parent = nullptr);

    void setSelectedTool(glimpso::Tool tool) override;
    void setSelectedColor(const QColor &color) override;
    void showTextOptions(const std::optional<glimpso::TextOptions> &options) override;

    // Centres the leading stack on `anchorX` (the canvas's middle, in this
    // widget's coordinates), yielding when space is tight.
    void centerTools(qreal anchorX);
    // Where the leading stack goes for the width, the anchor and the two
    // stacks' widths: centred on the anchor, at least the margin from the
    // left and clear of the trailing stack.
    static qreal leadingX(qreal width, std::optional<qreal> anchorX, qreal leadingWidth, qreal trailingWidth);

    ToolbarChip *toolChip(glimpso::Tool tool) const;
    ToolbarChip *actionChip(EditorAction::Kind kind) const;
    ColorChip *colorChip() const { return m_colorChip; }
    TextOptionsControl *textOptions() const { return m_textOptions; }
    AccentButton *saveButton() const { return m_save; }
    QWidget *leading() const { return m_leading; }
    QWidget *trailing() const { return m_trailing; }
    glimpso::Tool selectedTool() const { return m_selectedTool; }

    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    ToolbarChip *makeActionChip(EditorAction::Kind kind, PillGroup *group);
    void toolClicked(glimpso::Tool tool);
    void send(const EditorAction &action);
    void layoutStacks();

    std::function<void(const EditorAction &)> m_handler;
    AppSettings &m_settings;
    std::map<glimpso::Tool, ToolbarChip *> m_toolButtons;
    std::map<EditorAction::Kind, ToolbarChip *> m_actionButtons;
    ColorChip *m_colorChip = nullptr;
    TextOptionsControl *m_textOptions = nullptr;
    PillGroup *m_textPill = nullptr;
    QWidget *m_leading = nullptr;
    QWidget *m_trailing = nullptr;
    AccentButton *m_save = nullptr;
    glimpso::Tool m_selectedTool = glimpso::Tool::none;
    std::optional<qreal> m_anchorX;
};
