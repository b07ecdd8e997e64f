#pragma once

#include "annotation/EditorAction.h"
#include "overlay/CanvasToolbar.h"
#include "toolbars/ToolbarChrome.h"

#include <QColor>
#include <QList>
#include <QPointer>
#include <QSize>
#include <QWidget>

#include <functional>
#include <map>

class AppSettings;
class ColorChip;
class GlassBackdrop;
class QHBoxLayout;
class SizeChip;
class SizePopoverController;
class TextOptionsControl;
class ToolbarChip;
class ToolbarSeparator;

// The toolbar that floats next to an on-screen selection: the tools, the text
// options while text is in play, the colour, the selection's size, undo and
// redo, and the outputs. Every chip sends one EditorAction to one handler.
class EditorToolbar : public QWidget, public CanvasToolbar
{
    Q_OBJECT

public:
    static constexpr int barHeight = 40;

    EditorToolbar(bool showsSize, std::function<void(const EditorAction &)> handler, AppSettings &settings,
                  QWidget *parent = nullptr);
    ~EditorToolbar() override;

    // CanvasToolbar
    qreal fittingWidth() const override;
    void place(SelectorSurface &surface, const QRectF &frame) override;
    void setCurrentSize(const QSize &pixels) override;
    void setOnWidthChange(std::function<void()> onWidthChange) override { m_onWidthChange = std::move(onWidthChange); }

    // AnnotationToolbar
    void setSelectedTool(glimpso::Tool tool) override;
    void setSelectedColor(const QColor &color) override;
    void showTextOptions(const std::optional<glimpso::TextOptions> &options) override;

    // Colours, radius and style from the four chrome settings.
    void applyChromeSettings();
    void toggleSizePopover();

    // The parts, for tests.
    ToolbarChip *toolChip(glimpso::Tool tool) const;
    ToolbarChip *actionChip(EditorAction::Kind kind) const;
    ColorChip *colorChip() const { return m_colorChip; }
    SizeChip *sizeChip() const { return m_sizeChip; }
    SizePopoverController *sizePopover() const;
    TextOptionsControl *textOptions() const { return m_textOptions; }
    const QList<ToolbarSeparator *> &separators() const { return m_separators; }
    bool hasGlassView() const { return m_glassView != nullptr; }
    const ToolbarChrome &chrome() const { return m_chrome; }
    glimpso::Tool selectedTool() const { return m_selectedTool; }
    QSize currentSize() const { return m_currentSize; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void addToolChips(bool textGroup);
    void addActionChip(EditorAction::Kind kind);
    void addSeparator();
    void toolClicked(glimpso::Tool tool);
    void send(const EditorAction &action);
    void showGlass(const QColor &tint);
    void removeGlass();
    void logChipPlaces() const;

    std::function<void(const EditorAction &)> m_handler;
    AppSettings &m_settings;
    QHBoxLayout *m_stack;
    std::map<glimpso::Tool, ToolbarChip *> m_toolButtons;
    std::map<EditorAction::Kind, ToolbarChip *> m_actionButtons;
    ColorChip *m_colorChip = nullptr;
    TextOptionsControl *m_textOptions = nullptr;
    std::function<void()> m_onWidthChange;
    SizeChip *m_sizeChip = nullptr;
    QPointer<SizePopoverController> m_sizePopover;
    QSize m_currentSize{0, 0};
    glimpso::Tool m_selectedTool = glimpso::Tool::none;
    QColor m_selectedColor;
    QList<ToolbarSeparator *> m_separators;
    GlassBackdrop *m_glassView = nullptr;
    bool m_showsSize;
    ToolbarChrome m_chrome;
};
