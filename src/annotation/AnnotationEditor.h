#pragma once

#include "annotation/Annotation.h"
#include "annotation/AnnotationHistory.h"
#include "annotation/AnnotationSurface.h"
#include "annotation/AnnotationToolbar.h"
#include "annotation/CursorRect.h"
#include "annotation/EditorAction.h"
#include "annotation/Handle.h"
#include "annotation/ScrollInput.h"
#include "annotation/ScrollSteps.h"
#include "annotation/TextEntry.h"
#include "annotation/TextHost.h"
#include "annotation/TextOptions.h"
#include "annotation/Tool.h"
#include "settings/EditorShortcut.h"
#include "settings/Hotkey.h"

#include <QColor>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <functional>
#include <optional>

class AppSettings;

namespace glimpso {

// The drawing state machine behind both editing places: the frozen screen of
// a capture and the editor window. It knows nothing of windows: its host hands
// it pointer, key and wheel input in the host's own coordinates and shows what
// it is told through AnnotationSurface; the toolbar mirrors its state through
// AnnotationToolbar. A press outside `canvas` never starts anything.
//
// It reads the default colour, the stroke width and the editor shortcuts from
// the settings, and writes the stroke width back when the wheel changes it.
class AnnotationEditor {
public:
    explicit AnnotationEditor(AppSettings &settings);

    // Neither is owned; the host keeps both alive as long as the editor, or
    // sets them back to null.
    void setSurface(AnnotationSurface *surface) { m_surface = surface; }
    void setToolbar(AnnotationToolbar *toolbar) { m_toolbar = toolbar; }

    // Where drawing may begin: the selection on screen, the image in a window.
    void setCanvas(const QRectF &canvas) { m_canvas = canvas; }
    QRectF canvas() const { return m_canvas; }

    // Receives copy, save, upload, copyText and close.
    void setOnOutput(std::function<void(const EditorAction &)> onOutput) { m_onOutput = std::move(onOutput); }
    void setOnToolChange(std::function<void(Tool)> onToolChange) { m_onToolChange = std::move(onToolChange); }

    Tool currentTool() const { return m_currentTool; }
    // Fires onToolChange only when the tool really changed. Toolbar clicks go
    // through handleToolbarAction, which also settles selection and colours.
    void setCurrentTool(Tool tool);

    // True when the press was taken. False is the one answer that lets the
    // on-screen host move the selection itself (tool move, nothing hit).
    bool mouseDown(QPointF p);
    // Whether the drag or release acted on anything.
    bool mouseDragged(QPointF p, Qt::KeyboardModifiers modifiers);
    bool mouseUp(QPointF p);
    // Whether the key was taken. `key` comes from Hotkey::fromKeyEvent; the
    // typed text is not needed here, as a field open for typing receives its
    // keys itself.
    bool keyDown(const Hotkey &key, const QString &text = {});
    // Whether the wheel was taken (then the host must not scroll).
    bool scrollWheel(const ScrollInput &input);
    // Reshapes the running stroke with the constraint held or not; the host
    // calls it when Shift or Alt change during a pencil or highlight stroke,
    // with pencilLastPoint, so the straight line shows and goes at once.
    void update(QPointF p, bool held);
    std::optional<QPointF> pencilLastPoint() const { return m_pencilLastPoint; }
    bool strokeInProgress() const { return m_inProgress.has_value(); }
    // Where the pointer is; the readouts of the wheel show there.
    void setLastMouseLocation(QPointF p) { m_lastMouseLocation = p; }

    void handleToolbarAction(const EditorAction &action);
    // Shows the text control for a selected text, for the text tool, or hides it.
    void syncTextOptions();

    // Text entry. The field opens on a press with the text tool and becomes a
    // text mark on commit (any other press, a tool change, an output, Return).
    bool hasTextField() const { return m_text.isOpen(); }
    // Closes the field and drops what was typed (Escape).
    void endTextEdit();
    void commitPendingText();
    // Hooks of the field and its frame: the text changed (the field grows to
    // fit), the frame was dragged by `travel`, a resize drag began or moved.
    void textFieldChanged();
    void moveTextBy(QPointF travel);
    void beginTextResize();
    void resizeTextBy(QSizeF travel);

    bool hasSelection() const { return selectedIndex().has_value(); }
    std::optional<qsizetype> selectedAnnotationIndex() const { return selectedIndex(); }
    void clearSelection();
    // True when the wheel should size something rather than scroll the host:
    // a text field is open, a text or bubble is the target, or the tool is the counter.
    bool scrollSizesSelection() const;

    // Hover cursors in priority order (later wins).
    QList<CursorRect> cursorRects() const;

    const QList<Annotation> &annotations() const { return m_history.annotations; }
    const QList<Annotation> &redoStack() const { return m_history.redoStack; }
    // The list relative to `rect`, y down from its top edge, in points: what
    // the flattener takes.
    QList<Annotation> annotationsInImageSpace(const QRectF &rect) const;

    // What the next marks are drawn with.
    QColor currentColor() const { return m_currentColor; }
    QColor highlightColor() const { return m_highlightColor; }
    double strokeWidth() const { return m_strokeWidth; }
    double mosaicBlock() const { return m_mosaicBlock; }
    double sequenceRadius() const { return m_sequenceRadius; }
    int sequenceCounter() const { return m_sequenceCounter; }
    TextOptions textOptions() const { return m_textOptions; }

    // The text options of the last edit in this process, where every new
    // editor starts; they are not stored on disk.
    static TextOptions lastTextOptions();
    static void setLastTextOptions(const TextOptions &options);

private:
    std::optional<qsizetype> selectedIndex() const;
    std::optional<qsizetype> selectedBubble() const;
    const Annotation *selected() const;
    const Annotation::Text *selectedText() const;
    void select(qsizetype index);
    void showSelectionOutline();
    void clearGestures();

    bool pressWithMoveTool(QPointF p);
    void begin(QPointF p);
    void finalize();
    void placeSequenceBubble(QPointF p);
    void setHistory(AnnotationHistory history);
    void replaceAt(qsizetype index, const Annotation &annotation);

    void undo();
    void redo();
    void deleteSelected();
    void selectTool(Tool tool);
    void selectColor(const QColor &color);
    void recolorSelection(const QColor &color);
    void applyTextOptions(const TextOptions &options);
    void output(const EditorAction &action);
    void runShortcut(EditorShortcut shortcut);

    void beginTextEdit(QPointF p);
    void styleTextField();

    void renderPreview();
    void renderAnnotations();
    void showHUD(const QString &text);
    void invalidateCursors();

    AppSettings &m_settings;
    AnnotationSurface *m_surface = nullptr;
    AnnotationToolbar *m_toolbar = nullptr;
    QRectF m_canvas;
    std::function<void(const EditorAction &)> m_onOutput;
    Tool m_currentTool = Tool::none;
    std::function<void(Tool)> m_onToolChange;
    AnnotationHistory m_history;

    // Drawing.
    std::optional<Annotation> m_inProgress;
    std::optional<QPointF> m_drawAnchor;
    QColor m_previewStroke;
    double m_previewWidth = 3;
    QColor m_previewFill = Qt::transparent;
    QList<QPointF> m_pencilPoints;
    std::optional<QPointF> m_pencilLastPoint;

    // Selection and the gestures on it.
    std::optional<qsizetype> m_selectedAnnotationIndex;
    std::optional<QPointF> m_moveStartMouse;
    std::optional<Annotation> m_moveStartAnnotation;
    std::optional<int> m_activePointHandle;
    std::optional<Handle> m_activeAnnotationHandle;
    std::optional<QRectF> m_annotationResizeStartBounds;
    std::optional<QPointF> m_annotationResizeStartMouse;
    std::optional<Annotation> m_annotationResizeStartAnnotation;

    // What new marks get.
    QColor m_currentColor;
    QColor m_highlightColor;
    double m_strokeWidth = 3;
    TextOptions m_textOptions;
    double m_mosaicBlock = 16;
    int m_sequenceCounter = 1;
    double m_sequenceRadius = 14;

    TextEntry m_text;
    double m_textResizeStart = 20;

    QPointF m_lastMouseLocation;
    std::optional<qsizetype> m_lastBubble;
    ScrollSteps m_scroll;
};

} // namespace glimpso
