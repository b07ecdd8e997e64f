#include "annotation/AnnotationEditor.h"

#include "annotation/DrawingRules.h"
#include "annotation/EditorKeys.h"
#include "annotation/StrokeGeometry.h"
#include "annotation/TextLook.h"
#include "settings/AppSettings.h"
#include "settings/HexColor.h"

#include <algorithm>
#include <cmath>

namespace glimpso {

namespace {

// Press distances and grip sizes, in points.
constexpr double pointHandleReach = 10;
constexpr double boxHandleSide = 16;
constexpr double pointHandleCursorSide = 20;
constexpr double moveCursorMargin = 6;
constexpr double highlightWidth = 18;

// Ranges of what the wheel sizes.
constexpr int bubbleRadiusMin = 8, bubbleRadiusMax = 40;
constexpr int textSizeMin = 10, textSizeMax = 80;
constexpr int mosaicBlockMin = 4, mosaicBlockMax = 80;
constexpr int strokeWidthMin = 1, strokeWidthMax = 30;

const QColor fallbackRed(0xFF, 0x3B, 0x30);

TextOptions s_lastTextOptions;

QColor colorFromHex(const QString &hex)
{
    return HexColor::parse(hex).value_or(fallbackRed);
}

int steppedClamped(double current, int steps, int lowest, int highest)
{
    return std::clamp(int(std::lround(current)) + steps, lowest, highest);
}

QString hudText(const char *what, int value)
{
    return QString::fromLatin1(what) + QLatin1Char(' ') + QString::number(value) + QStringLiteral("pt");
}

Annotation withTextOptions(const Annotation::Text &text, const TextOptions &options)
{
    Annotation::Text changed = text;
    changed.options = options;
    return changed;
}

Annotation withWidth(const Annotation &annotation, double width)
{
    Annotation::Case value = annotation.value();
    std::visit(
        [width](auto &mark) {
            if constexpr (requires { mark.width; })
                mark.width = width;
        },
        value);
    return std::visit([](auto &mark) { return Annotation(mark); }, value);
}

} // namespace

AnnotationEditor::AnnotationEditor(AppSettings &settings)
    : m_settings(settings)
    , m_currentColor(colorFromHex(settings.defaultColorHex()))
    , m_highlightColor(Annotation::highlightYellow())
    , m_strokeWidth(settings.strokeWidth())
    , m_textOptions(s_lastTextOptions)
{
    m_previewStroke = m_currentColor;
}

TextOptions AnnotationEditor::lastTextOptions()
{
    return s_lastTextOptions;
}

void AnnotationEditor::setLastTextOptions(const TextOptions &options)
{
    s_lastTextOptions = options;
}

void AnnotationEditor::setCurrentTool(Tool tool)
{
    if (tool == m_currentTool)
        return;
    m_currentTool = tool;
    if (m_onToolChange)
        m_onToolChange(tool);
}

// ---- selection ----

std::optional<qsizetype> AnnotationEditor::selectedIndex() const
{
    if (m_selectedAnnotationIndex && *m_selectedAnnotationIndex >= 0
        && *m_selectedAnnotationIndex < m_history.annotations.size())
        return m_selectedAnnotationIndex;
    return std::nullopt;
}

const Annotation *AnnotationEditor::selected() const
{
    const auto index = selectedIndex();
    return index ? &m_history.annotations[*index] : nullptr;
}

const Annotation::Text *AnnotationEditor::selectedText() const
{
    const Annotation *annotation = selected();
    return annotation ? annotation->as<Annotation::Text>() : nullptr;
}

std::optional<qsizetype> AnnotationEditor::selectedBubble() const
{
    std::optional<qsizetype> candidates[] = {m_selectedAnnotationIndex,
                                             m_currentTool == Tool::sequence ? m_lastBubble : std::nullopt};
    for (const auto &candidate : candidates) {
        if (candidate && *candidate >= 0 && *candidate < m_history.annotations.size()
            && m_history.annotations[*candidate].is<Annotation::Sequence>())
            return candidate;
    }
    return std::nullopt;
}

void AnnotationEditor::select(qsizetype index)
{
    const bool changed = m_selectedAnnotationIndex != index;
    m_selectedAnnotationIndex = index;
    if (changed)
        syncTextOptions();
}

void AnnotationEditor::showSelectionOutline()
{
    const Annotation *annotation = selected();
    if (!annotation || !m_surface)
        return;
    if (const auto handles = annotation->pointHandles()) {
        m_surface->renderAnnotationSelection(std::nullopt);
        m_surface->renderPointHandles(QList<QPointF>(handles->begin(), handles->end()));
    } else {
        m_surface->renderPointHandles(std::nullopt);
        m_surface->renderAnnotationSelection(annotation->boundingRect());
    }
    invalidateCursors();
}

void AnnotationEditor::clearGestures()
{
    m_moveStartMouse.reset();
    m_moveStartAnnotation.reset();
    m_activePointHandle.reset();
    m_activeAnnotationHandle.reset();
    m_annotationResizeStartBounds.reset();
    m_annotationResizeStartMouse.reset();
    m_annotationResizeStartAnnotation.reset();
}

void AnnotationEditor::clearSelection()
{
    const bool hadSelection = m_selectedAnnotationIndex.has_value();
    m_selectedAnnotationIndex.reset();
    if (hadSelection)
        syncTextOptions();
    clearGestures();
    if (m_surface) {
        m_surface->renderAnnotationSelection(std::nullopt);
        m_surface->renderPointHandles(std::nullopt);
    }
    invalidateCursors();
}

bool AnnotationEditor::scrollSizesSelection() const
{
    return hasTextField() || selectedText() || selectedBubble() || m_currentTool == Tool::sequence;
}

// ---- pointer ----

bool AnnotationEditor::mouseDown(QPointF p)
{
    // The grips of a selected line or arrow win with every tool; the middle one
    // first, so a bend can be grabbed where it lies on an end.
    if (const Annotation *annotation = selected()) {
        if (const auto handles = annotation->pointHandles()) {
            for (int index : {1, 0, 2}) {
                if (StrokeGeometry::length((*handles)[index] - p) <= pointHandleReach) {
                    commitPendingText();
                    m_activePointHandle = index;
                    return true;
                }
            }
        }
    }
    if (m_currentTool == Tool::move)
        return pressWithMoveTool(p);

    const bool inside = m_canvas.contains(p);
    if (inside && m_currentTool == Tool::text) {
        commitPendingText();
        beginTextEdit(p);
    } else if (inside && m_currentTool == Tool::sequence) {
        commitPendingText();
        clearSelection();
        placeSequenceBubble(p);
    } else if (inside && m_currentTool != Tool::none) {
        commitPendingText();
        clearSelection();
        begin(p);
    } else if (m_currentTool == Tool::none && hasTextField()) {
        commitPendingText();
    }
    return true;
}

bool AnnotationEditor::pressWithMoveTool(QPointF p)
{
    if (const Annotation *annotation = selected(); annotation && !annotation->pointHandles()) {
        const QRectF bounds = annotation->boundingRect();
        for (Handle handle : allHandles) {
            if (hitBox(handle, bounds, boxHandleSide).contains(p)) {
                m_activeAnnotationHandle = handle;
                m_annotationResizeStartBounds = bounds;
                m_annotationResizeStartMouse = p;
                m_annotationResizeStartAnnotation = *annotation;
                return true;
            }
        }
    }
    for (qsizetype index = m_history.annotations.size() - 1; index >= 0; --index) {
        if (!m_history.annotations[index].hitTest(p))
            continue;
        commitPendingText();
        select(index);
        m_moveStartMouse = p;
        m_moveStartAnnotation = m_history.annotations[index];
        showSelectionOutline();
        return true;
    }
    if (!m_canvas.contains(p))
        return true;
    commitPendingText();
    clearSelection();
    return false;
}

void AnnotationEditor::begin(QPointF p)
{
    m_drawAnchor = p;
    m_previewFill = Qt::transparent;
    switch (m_currentTool) {
    case Tool::pencil:
    case Tool::highlight: {
        const bool pencil = m_currentTool == Tool::pencil;
        const QColor color = pencil ? m_currentColor : m_highlightColor;
        const double width = pencil ? m_strokeWidth : highlightWidth;
        m_inProgress = pencil ? Annotation::pencil({p}, color, width) : Annotation::highlight({p}, color, width);
        m_pencilPoints = {p};
        m_pencilLastPoint = p;
        m_previewStroke = color;
        m_previewWidth = width;
        break;
    }
    case Tool::line:
        m_inProgress = Annotation::line(p, p, m_currentColor, m_strokeWidth);
        break;
    case Tool::arrow:
        m_inProgress = Annotation::arrow(p, p, m_currentColor, m_strokeWidth);
        break;
    case Tool::rect:
        m_inProgress = Annotation::rect(QRectF(p, QSizeF()), m_currentColor, m_strokeWidth);
        break;
    case Tool::ellipse:
        m_inProgress = Annotation::ellipse(QRectF(p, QSizeF()), m_currentColor, m_strokeWidth);
        break;
    case Tool::mosaic:
        m_inProgress = Annotation::mosaic(QRectF(p, QSizeF()), m_mosaicBlock);
        m_previewStroke = QColor::fromRgbF(1, 1, 1, 0.8);
        m_previewWidth = 1.5;
        m_previewFill = QColor::fromRgbF(0, 0, 0, 0.15);
        break;
    case Tool::none:
    case Tool::move:
    case Tool::text:
    case Tool::sequence:
        return;
    }
    if (m_currentTool != Tool::pencil && m_currentTool != Tool::highlight && m_currentTool != Tool::mosaic) {
        m_previewStroke = m_currentColor;
        m_previewWidth = m_strokeWidth;
    }
    renderPreview();
}

bool AnnotationEditor::mouseDragged(QPointF p, Qt::KeyboardModifiers modifiers)
{
    if (m_activePointHandle && selected()) {
        replaceAt(*selectedIndex(), selected()->movingPointHandle(*m_activePointHandle, p));
        renderAnnotations();
        showSelectionOutline();
        return true;
    }
    if (m_activeAnnotationHandle && m_annotationResizeStartBounds && m_annotationResizeStartMouse
        && m_annotationResizeStartAnnotation) {
        // From the annotation as it was at the press, so rounding never builds up.
        const QRectF bounds = DrawingRules::resizedBounds(*m_activeAnnotationHandle, *m_annotationResizeStartBounds,
                                                          p - *m_annotationResizeStartMouse);
        if (const auto index = selectedIndex())
            replaceAt(*index, m_annotationResizeStartAnnotation->resized(bounds));
        renderAnnotations();
        showSelectionOutline();
        return true;
    }
    if (m_moveStartMouse && m_moveStartAnnotation && selected()) {
        replaceAt(*selectedIndex(), m_moveStartAnnotation->translated(p - *m_moveStartMouse));
        renderAnnotations();
        showSelectionOutline();
        return true;
    }
    if (m_inProgress && m_drawAnchor) {
        const bool held = DrawingRules::constraintHeld(modifiers);
        const bool segment = m_inProgress->is<Annotation::Line>() || m_inProgress->is<Annotation::Arrow>();
        if (segment && held)
            p = DrawingRules::snappedToEighths(*m_drawAnchor, p);
        update(p, held);
        return true;
    }
    return false;
}

void AnnotationEditor::update(QPointF p, bool held)
{
    if (!m_inProgress || !m_drawAnchor)
        return;
    const QPointF anchor = *m_drawAnchor;
    Annotation::Case shape = m_inProgress->value();
    std::visit(
        [&](auto &mark) {
            using Mark = std::decay_t<decltype(mark)>;
            if constexpr (std::is_base_of_v<PolylineStroke, Mark>) {
                if (!m_pencilLastPoint || *m_pencilLastPoint != p) {
                    m_pencilPoints.append(p);
                    m_pencilLastPoint = p;
                }
                // The freehand trace goes on growing under the straight line, so
                // letting go of the key brings all of it back.
                mark.points = held ? QList<QPointF>{anchor, p} : m_pencilPoints;
            } else if constexpr (std::is_base_of_v<BendableSegment, Mark>) {
                mark.to = p;
                mark.bend.reset();
            } else if constexpr (std::is_base_of_v<FramedOutline, Mark> || std::is_same_v<Mark, Annotation::Mosaic>) {
                mark.frame = DrawingRules::dragFrame(anchor, p, held);
            }
        },
        shape);
    m_inProgress = std::visit([](auto &mark) { return Annotation(mark); }, shape);
    if (const auto *mosaic = m_inProgress->as<Annotation::Mosaic>(); mosaic && m_surface)
        m_surface->renderMosaicPreview(mosaic->frame, mosaic->blockSize);
    m_previewStroke = m_inProgress->strokeColor();
    renderPreview();
}

bool AnnotationEditor::mouseUp(QPointF)
{
    if (m_activePointHandle) {
        m_activePointHandle.reset();
        invalidateCursors();
        return true;
    }
    if (m_activeAnnotationHandle) {
        m_activeAnnotationHandle.reset();
        m_annotationResizeStartBounds.reset();
        m_annotationResizeStartMouse.reset();
        m_annotationResizeStartAnnotation.reset();
        invalidateCursors();
        return true;
    }
    if (m_moveStartMouse) {
        m_moveStartMouse.reset();
        m_moveStartAnnotation.reset();
        return true;
    }
    if (m_inProgress) {
        finalize();
        return true;
    }
    return false;
}

void AnnotationEditor::finalize()
{
    if (m_inProgress && DrawingRules::isMeaningful(*m_inProgress)) {
        const Annotation shape = *m_inProgress;
        setHistory(m_history.adding(shape));
        renderAnnotations();
        // A fresh line or arrow shows its grips at once, whatever the tool, so
        // a bend can be dragged straight away.
        if (shape.pointHandles()) {
            select(m_history.annotations.size() - 1);
            showSelectionOutline();
        }
    }
    m_inProgress.reset();
    m_drawAnchor.reset();
    m_pencilLastPoint.reset();
    m_pencilPoints.clear();
    if (m_surface) {
        m_surface->renderPreview(std::nullopt, m_previewStroke, m_previewWidth, m_previewFill);
        m_surface->renderMosaicPreview(std::nullopt, m_mosaicBlock);
    }
}

void AnnotationEditor::placeSequenceBubble(QPointF p)
{
    setHistory(m_history.adding(Annotation::sequence(m_sequenceCounter, p, m_currentColor, m_sequenceRadius)));
    m_lastBubble = m_history.annotations.size() - 1;
    // Numbers are never given back: undo and delete leave gaps.
    ++m_sequenceCounter;
    renderAnnotations();
}

void AnnotationEditor::setHistory(AnnotationHistory history)
{
    m_history = std::move(history);
}

void AnnotationEditor::replaceAt(qsizetype index, const Annotation &annotation)
{
    m_history = m_history.replacing(index, annotation);
}

// ---- actions ----

void AnnotationEditor::undo()
{
    if (!m_history.annotations.isEmpty()) {
        setHistory(m_history.undoing());
        if (m_selectedAnnotationIndex && !selectedIndex())
            clearSelection();
    }
    renderAnnotations();
}

void AnnotationEditor::redo()
{
    setHistory(m_history.redoing());
    renderAnnotations();
}

void AnnotationEditor::deleteSelected()
{
    const auto index = selectedIndex();
    if (!index)
        return;
    setHistory(m_history.deleting(*index));
    clearSelection();
    renderAnnotations();
}

void AnnotationEditor::handleToolbarAction(const EditorAction &action)
{
    switch (action.kind()) {
    case EditorAction::Kind::selectTool:
        selectTool(std::get<Tool>(action.payload()));
        break;
    case EditorAction::Kind::selectColor:
        selectColor(std::get<QColor>(action.payload()));
        break;
    case EditorAction::Kind::setSize:
        // The selection's size belongs to the host.
        break;
    case EditorAction::Kind::setTextOptions:
        applyTextOptions(std::get<TextOptions>(action.payload()));
        break;
    case EditorAction::Kind::undo:
        undo();
        break;
    case EditorAction::Kind::redo:
        redo();
        break;
    case EditorAction::Kind::copy:
    case EditorAction::Kind::save:
    case EditorAction::Kind::upload:
    case EditorAction::Kind::copyText:
    case EditorAction::Kind::close:
        output(action);
        break;
    }
}

void AnnotationEditor::selectTool(Tool tool)
{
    commitPendingText();
    const bool wasHighlight = m_currentTool == Tool::highlight;
    setCurrentTool(tool);
    if (tool != Tool::move)
        clearSelection();
    syncTextOptions();
    // The colour chip follows the two remembered colours.
    if (m_toolbar) {
        if (tool == Tool::highlight)
            m_toolbar->setSelectedColor(m_highlightColor);
        else if (wasHighlight)
            m_toolbar->setSelectedColor(m_currentColor);
    }
    invalidateCursors();
}

void AnnotationEditor::selectColor(const QColor &color)
{
    if (m_currentTool == Tool::highlight) {
        // Only the next highlight changes; a selected one keeps its colour.
        m_highlightColor = Annotation::atHalfAlpha(color);
        m_previewStroke = m_highlightColor;
        renderPreview();
        return;
    }
    m_currentColor = color;
    m_previewStroke = color;
    renderPreview();
    styleTextField();
    recolorSelection(color);
}

void AnnotationEditor::recolorSelection(const QColor &color)
{
    if (hasTextField())
        return;
    const auto target = selectedIndex() ? selectedIndex() : selectedBubble();
    if (!target)
        return;
    replaceAt(*target, m_history.annotations[*target].recolored(color));
    renderAnnotations();
    if (target == selectedIndex())
        showSelectionOutline();
}

void AnnotationEditor::applyTextOptions(const TextOptions &options)
{
    if (const Annotation::Text *text = selectedText(); text && !hasTextField()) {
        // Restyling a placed text leaves the options for new text as they are.
        replaceAt(*selectedIndex(), withTextOptions(*text, options));
        renderAnnotations();
        showSelectionOutline();
    } else {
        m_textOptions = options;
        s_lastTextOptions = options;
        styleTextField();
    }
    if (m_toolbar)
        m_toolbar->showTextOptions(options);
}

void AnnotationEditor::syncTextOptions()
{
    if (!m_toolbar)
        return;
    if (const Annotation::Text *text = selectedText())
        m_toolbar->showTextOptions(text->options);
    else if (m_currentTool == Tool::text)
        m_toolbar->showTextOptions(m_textOptions);
    else
        m_toolbar->showTextOptions(std::nullopt);
}

void AnnotationEditor::output(const EditorAction &action)
{
    commitPendingText();
    if (m_onOutput)
        m_onOutput(action);
}

// ---- wheel ----

bool AnnotationEditor::scrollWheel(const ScrollInput &input)
{
    const int steps = m_scroll.wholeSteps(input);
    if (steps == 0)
        return true;

    if (!hasTextField()) {
        if (const auto bubbleIndex = selectedBubble()) {
            const auto &bubble = *m_history.annotations[*bubbleIndex].as<Annotation::Sequence>();
            const int radius = steppedClamped(bubble.radius, steps, bubbleRadiusMin, bubbleRadiusMax);
            Annotation::Sequence resized = bubble;
            resized.radius = radius;
            replaceAt(*bubbleIndex, resized);
            m_sequenceRadius = radius;
            renderAnnotations();
            if (bubbleIndex == selectedIndex())
                showSelectionOutline();
            showHUD(hudText("Bubble", radius));
            return true;
        }
        if (const Annotation::Text *text = selectedText()) {
            TextOptions options = text->options;
            const int size = steppedClamped(options.size, steps, textSizeMin, textSizeMax);
            options.size = size;
            applyTextOptions(options);
            showHUD(hudText("Text", size));
            return true;
        }
    }
    if (m_currentTool == Tool::none)
        return false;
    if (m_currentTool == Tool::text || hasTextField()) {
        TextOptions options = m_textOptions;
        const int size = steppedClamped(options.size, steps, textSizeMin, textSizeMax);
        options.size = size;
        applyTextOptions(options);
        showHUD(hudText("Text", size));
        return true;
    }
    if (m_currentTool == Tool::mosaic) {
        const auto *running = m_inProgress ? m_inProgress->as<Annotation::Mosaic>() : nullptr;
        const int block = steppedClamped(running ? running->blockSize : m_mosaicBlock, steps, mosaicBlockMin,
                                         mosaicBlockMax);
        m_mosaicBlock = block;
        if (running) {
            Annotation::Mosaic resized = *running;
            resized.blockSize = block;
            m_inProgress = resized;
            if (m_surface)
                m_surface->renderMosaicPreview(resized.frame, block);
        }
        showHUD(hudText("Pixel", block));
        return true;
    }
    if (m_currentTool == Tool::sequence) {
        const int radius = steppedClamped(m_sequenceRadius, steps, bubbleRadiusMin, bubbleRadiusMax);
        m_sequenceRadius = radius;
        showHUD(hudText("Bubble", radius));
        return true;
    }
    // A selected shape keeps its width: the wheel sets it for the next one.
    const int width = steppedClamped(m_strokeWidth, steps, strokeWidthMin, strokeWidthMax);
    m_strokeWidth = width;
    m_settings.strokeWidth.set(width);
    m_previewWidth = width;
    if (m_inProgress && !m_inProgress->is<Annotation::Text>() && !m_inProgress->is<Annotation::Sequence>()
        && !m_inProgress->is<Annotation::Mosaic>())
        m_inProgress = withWidth(*m_inProgress, width);
    renderPreview();
    showHUD(hudText("Width", width));
    return true;
}

// ---- keys ----

bool AnnotationEditor::keyDown(const Hotkey &key, const QString &)
{
    if (EditorKeys::isDelete(key) && selectedIndex()) {
        deleteSelected();
        return true;
    }
    const EditorShortcutMap bindings = m_settings.editorShortcuts();
    if (const auto shortcut = EditorKeys::match(bindings, key)) {
        // A bare key belongs to the text being typed; undo and redo carry
        // modifiers and so still work in the field.
        const auto binding = bindings.find(*shortcut);
        const Hotkey bound = binding != bindings.end() ? binding->second : EditorShortcuts::defaultHotkey(*shortcut);
        if (hasTextField() && EditorKeys::isBare(bound))
            return false;
        runShortcut(*shortcut);
        return true;
    }
    if (EditorKeys::isReturn(key) && !hasTextField()) {
        output(EditorAction::copy());
        return true;
    }
    return false;
}

void AnnotationEditor::runShortcut(EditorShortcut shortcut)
{
    switch (shortcut) {
    case EditorShortcut::copy: output(EditorAction::copy()); break;
    case EditorShortcut::save: output(EditorAction::save()); break;
    case EditorShortcut::upload: output(EditorAction::upload()); break;
    case EditorShortcut::undo: handleToolbarAction(EditorAction::undo()); break;
    case EditorShortcut::redo: handleToolbarAction(EditorAction::redo()); break;
    case EditorShortcut::text:
        handleToolbarAction(EditorAction::selectTool(Tool::text));
        if (m_toolbar)
            m_toolbar->setSelectedTool(Tool::text);
        break;
    }
}

// ---- text entry ----

void AnnotationEditor::beginTextEdit(QPointF p)
{
    if (!m_surface)
        return;
    if (const std::optional<TextHost> host = m_surface->textHost(p); host && m_text.open(*host, p, m_textOptions))
        styleTextField();
}

void AnnotationEditor::styleTextField()
{
    m_text.style(m_textOptions, m_currentColor, m_canvas);
}

void AnnotationEditor::textFieldChanged()
{
    m_text.fit(m_textOptions, m_canvas);
}

void AnnotationEditor::moveTextBy(QPointF travel)
{
    m_text.moveBy(travel, m_textOptions);
}

void AnnotationEditor::beginTextResize()
{
    m_textResizeStart = m_textOptions.size;
}

void AnnotationEditor::resizeTextBy(QSizeF travel)
{
    if (!m_text.isOpen())
        return;
    TextOptions options = m_textOptions;
    options.size = std::clamp(m_textResizeStart + (travel.width() + travel.height()) / 3, double(textSizeMin),
                              double(textSizeMax));
    applyTextOptions(options);
    showHUD(hudText("Text", int(std::lround(options.size))));
}

void AnnotationEditor::commitPendingText()
{
    if (!m_text.isOpen())
        return;
    const QString string = m_text.text();
    const QPointF origin = m_text.origin();
    endTextEdit();
    if (string.isEmpty())
        return;
    setHistory(m_history.adding(Annotation::text(string, origin, m_textOptions, m_currentColor)));
    renderAnnotations();
}

void AnnotationEditor::endTextEdit()
{
    m_text.close();
}

// ---- what the host asks ----

QList<CursorRect> AnnotationEditor::cursorRects() const
{
    QList<CursorRect> rects;
    Qt::CursorShape canvasCursor = Qt::CrossCursor;
    if (m_currentTool == Tool::none || m_currentTool == Tool::move)
        canvasCursor = Qt::ArrowCursor;
    else if (m_currentTool == Tool::text)
        canvasCursor = Qt::IBeamCursor;
    rects.append({m_canvas, canvasCursor});
    if (m_currentTool == Tool::move) {
        for (const Annotation &annotation : m_history.annotations) {
            const QRectF grown = annotation.boundingRect().adjusted(-moveCursorMargin, -moveCursorMargin,
                                                                    moveCursorMargin, moveCursorMargin);
            rects.append({grown, Qt::OpenHandCursor});
        }
    }
    if (const Annotation *annotation = selected()) {
        if (const auto handles = annotation->pointHandles()) {
            for (QPointF handle : *handles) {
                const double half = pointHandleCursorSide / 2;
                rects.append({QRectF(handle.x() - half, handle.y() - half, pointHandleCursorSide, pointHandleCursorSide),
                              Qt::ArrowCursor});
            }
        } else {
            const QRectF bounds = annotation->boundingRect();
            for (Handle handle : allHandles)
                rects.append({hitBox(handle, bounds, boxHandleSide), cursor(handle)});
        }
    }
    return rects;
}

QList<Annotation> AnnotationEditor::annotationsInImageSpace(const QRectF &rect) const
{
    QList<Annotation> result;
    result.reserve(m_history.annotations.size());
    for (const Annotation &annotation : m_history.annotations)
        result.append(DrawingRules::toImageSpace(annotation, rect));
    return result;
}

// ---- surface helpers ----

void AnnotationEditor::renderPreview()
{
    if (!m_surface)
        return;
    std::optional<QPainterPath> path;
    if (m_inProgress)
        path = m_inProgress->path();
    m_surface->renderPreview(path, m_previewStroke, m_previewWidth, m_previewFill);
}

void AnnotationEditor::renderAnnotations()
{
    if (m_surface)
        m_surface->renderAnnotations(m_history.annotations);
}

void AnnotationEditor::showHUD(const QString &text)
{
    if (m_surface)
        m_surface->showHUD(text, m_lastMouseLocation);
}

void AnnotationEditor::invalidateCursors()
{
    if (m_surface)
        m_surface->invalidateCursors();
}

} // namespace glimpso
