#include "overlay/SelectionCanvas.h"

#include "acquire/RegionCompositor.h"
#include "overlay/SelectorSurface.h"
#include "settings/AppSettings.h"

#include <QLoggingCategory>
#include <QPointer>

#include <algorithm>
#include <cmath>

using glimpso::Edges;
using glimpso::Handle;

Q_LOGGING_CATEGORY(lcCanvas, "glimpso.SelectionCanvas")

namespace {

constexpr uint16_t escapeCode = 53;

// y-up edges of a rectangle: QRectF's top() is the smallest y.
qreal minY(const QRectF &r) { return r.top(); }
qreal maxY(const QRectF &r) { return r.bottom(); }

QRectF spanning(QPointF a, QPointF b)
{
    return {std::min(a.x(), b.x()), std::min(a.y(), b.y()), std::abs(b.x() - a.x()), std::abs(b.y() - a.y())};
}

qreal distance(const QRectF &frame, QPointF p)
{
    const qreal dx = std::max({frame.left() - p.x(), p.x() - frame.right(), 0.0});
    const qreal dy = std::max({minY(frame) - p.y(), p.y() - maxY(frame), 0.0});
    return std::hypot(dx, dy);
}

bool holds(const QRectF &frame, QPointF p)
{
    // Core Graphics' rule: the left and bottom edges belong to a frame, the
    // right and top ones do not.
    return p.x() >= frame.left() && p.x() < frame.right() && p.y() >= minY(frame) && p.y() < maxY(frame);
}

} // namespace

SelectionCanvas::SelectionCanvas(QList<ScreenSnapshot> snapshots, CaptureIntent intent, AppSettings &settings,
                                 std::function<void(const RegionResult &)> onResult, QObject *parent)
    : QObject(parent),
      m_snapshots(std::move(snapshots)),
      m_intent(intent),
      m_settings(settings),
      m_onResult(std::move(onResult)),
      m_editor(std::make_unique<glimpso::AnnotationEditor>(settings))
{
    for (const ScreenSnapshot &snapshot : std::as_const(m_snapshots))
        m_bounds = m_bounds.isNull() ? snapshot.frame : m_bounds.united(snapshot.frame);
    m_editor->setSurface(this);
    m_editor->setOnOutput([this](const EditorAction &action) { editorOutput(action); });
}

SelectionCanvas::~SelectionCanvas()
{
    // The editor may still point at the toolbar while both go.
    m_editor->setToolbar(nullptr);
}

std::optional<QRectF> SelectionCanvas::liveRect() const
{
    if (m_armedRect || !m_startPoint || !m_currentPoint)
        return std::nullopt;
    return spanning(*m_startPoint, *m_currentPoint);
}

void SelectionCanvas::mouseDown(QPointF point)
{
    if (!m_armedRect) {
        m_startPoint = point;
        m_currentPoint = point;
        const QRectF rect(point, QSizeF(0, 0));
        renderLiveDrag(rect);
        updateSizeReadout(rect);
        return;
    }
    // Handles first, so that they win also over an annotation lying under them.
    for (Handle handle : glimpso::allHandles) {
        if (glimpso::hitBox(handle, *m_armedRect, handleHitSide).contains(point)) {
            m_activeHandle = handle;
            m_resizeStartRect = *m_armedRect;
            m_resizeStartMouse = point;
            return;
        }
    }
    if (m_editor->mouseDown(point))
        return;
    if (m_editor->currentTool() == glimpso::Tool::move && m_armedRect->contains(point)) {
        m_moveStartRect = *m_armedRect;
        m_moveStartMouse = point;
    }
}

void SelectionCanvas::mouseDragged(QPointF point, Qt::KeyboardModifiers modifiers)
{
    if (m_activeHandle) {
        const QPointF travel = point - m_resizeStartMouse;
        applyResize(glimpso::dragEdges(*m_activeHandle, m_resizeStartRect, travel.x(), travel.y()));
        return;
    }
    if (m_moveStartRect) {
        QRectF moved = m_moveStartRect->translated(point - m_moveStartMouse);
        // The lower bound last: a selection as large as the bounds keeps to their minimum.
        qreal x = std::min(moved.x(), m_bounds.right() - moved.width());
        x = std::max(x, m_bounds.left());
        qreal y = std::min(moved.y(), maxY(m_bounds) - moved.height());
        y = std::max(y, minY(m_bounds));
        moved.moveTo(x, y);
        applyResize(Edges::of(moved));
        return;
    }
    if (m_armedRect) {
        m_editor->mouseDragged(point, modifiers);
        return;
    }
    if (!m_startPoint)
        return;
    m_currentPoint = point;
    const QRectF rect = spanning(*m_startPoint, point);
    renderLiveDrag(rect);
    updateSizeReadout(rect);
}

void SelectionCanvas::mouseUp(QPointF point)
{
    if (m_activeHandle) {
        m_activeHandle.reset();
        invalidateCursors();
        return;
    }
    if (m_moveStartRect) {
        m_moveStartRect.reset();
        invalidateCursors();
        return;
    }
    if (m_armedRect) {
        m_editor->mouseUp(point);
        return;
    }
    m_currentPoint = point;
    if (!m_startPoint) {
        emitResult(RegionResult::cancelled());
        return;
    }
    const QRectF rect = spanning(*m_startPoint, point);
    if (rect.width() < minimumSide || rect.height() < minimumSide) {
        // A plain click ends the capture; no message needed.
        emitResult(RegionResult::cancelled());
        return;
    }
    if (m_intent == CaptureIntent::text || m_settings.editMode.value() == EditMode::afterCapture) {
        emitResult(RegionResult::area(rect, m_snapshots));
        return;
    }
    arm(rect);
}

void SelectionCanvas::arm(const QRectF &rect)
{
    qCInfo(lcCanvas, "selection armed: %gx%g at (%g, %g)", rect.width(), rect.height(), rect.x(), rect.y());
    m_armedRect = rect;
    m_editor->setCanvas(rect);
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->renderSelection(rect, true);
    showToolbar();
    updateSizeReadout(rect);
    invalidateCursors();
}

bool SelectionCanvas::keyDown(const Hotkey &key, const QString &text)
{
    if (key.keyCode == escapeCode) {
        escape();
        return true;
    }
    if (!m_armedRect)
        return false;
    return m_editor->keyDown(key, text);
}

void SelectionCanvas::escape()
{
    if (m_editor->hasTextField())
        m_editor->endTextEdit();
    else if (!m_editor->hasSelection())
        emitResult(RegionResult::cancelled());
    else
        m_editor->clearSelection();
}

bool SelectionCanvas::scrollWheel(const glimpso::ScrollInput &input)
{
    return m_armedRect && m_editor->scrollWheel(input);
}

void SelectionCanvas::modifiersChanged(Qt::KeyboardModifiers modifiers)
{
    const std::optional<QPointF> last = m_editor->pencilLastPoint();
    if (!m_editor->strokeInProgress() || !last)
        return;
    m_editor->update(*last, modifiers & (Qt::ShiftModifier | Qt::AltModifier));
}

void SelectionCanvas::mouseMoved(QPointF point)
{
    m_editor->setLastMouseLocation(point);
}

void SelectionCanvas::applyResize(const Edges &edges)
{
    QRectF rect(std::min(edges.minX, edges.maxX), std::min(edges.minY, edges.maxY), std::abs(edges.maxX - edges.minX),
                std::abs(edges.maxY - edges.minY));
    const QRectF inside = rect.intersected(m_bounds);
    if (inside.isNull()) {
        // Wholly outside: keep a sliver at the nearest place within the bounds.
        rect = QRectF(std::clamp(rect.x(), m_bounds.left(), m_bounds.right()),
                      std::clamp(rect.y(), minY(m_bounds), maxY(m_bounds)), 0, 0);
    } else {
        rect = inside;
    }
    // After the intersection, so that a tiny selection in a corner may overhang.
    rect.setWidth(std::max(rect.width(), minimumSide));
    rect.setHeight(std::max(rect.height(), minimumSide));

    m_armedRect = rect;
    m_editor->setCanvas(rect);
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->renderSelection(rect, true);
    updateSizeReadout(rect);
    repositionToolbar(rect);
    invalidateCursors();
}

std::optional<QList<glimpso::CursorRect>> SelectionCanvas::cursorRects() const
{
    if (!m_armedRect)
        return std::nullopt;
    QList<glimpso::CursorRect> rects = m_editor->cursorRects();
    for (Handle handle : glimpso::allHandles)
        rects.append({glimpso::hitBox(handle, *m_armedRect, handleHitSide), glimpso::cursor(handle)});
    return rects;
}

void SelectionCanvas::showToolbar()
{
    if (!m_toolbarShown) {
        m_toolbarShown = true;
        if (m_toolbarFactory) {
            QPointer<SelectionCanvas> self(this);
            m_toolbar = m_toolbarFactory([self](const EditorAction &action) {
                // A click that lands after the capture has ended goes nowhere.
                if (self)
                    self->handleToolbarAction(action);
            });
        }
        if (m_toolbar) {
            m_editor->setToolbar(m_toolbar.get());
            m_toolbar->setOnWidthChange([this] {
                if (m_armedRect)
                    repositionToolbar(*m_armedRect);
            });
            m_toolbar->setSelectedTool(glimpso::Tool::rect);
        }
        // Every on-screen capture starts with the rectangle tool.
        m_editor->setCurrentTool(glimpso::Tool::rect);
        m_editor->syncTextOptions();
    }
    if (m_armedRect)
        repositionToolbar(*m_armedRect);
}

QRectF SelectionCanvas::toolbarFrame(const QRectF &selection, qreal fittingWidth, const QRectF &screen)
{
    const qreal w = std::max(fittingWidth, toolbarMinimumWidth);
    const qreal h = toolbarHeight;
    qreal y;
    const qreal below = minY(selection) - toolbarMargin - h;
    if (minY(screen) + toolbarMargin <= below)
        y = below;
    else if (maxY(selection) + toolbarMargin + h <= maxY(screen) - toolbarMargin)
        y = maxY(selection) + toolbarMargin;
    else
        y = minY(selection) + toolbarMargin;
    qreal x = selection.center().x() - w / 2;
    x = std::min(x, screen.right() - w - toolbarMargin);
    // The left margin wins on a screen narrower than the toolbar.
    x = std::max(x, screen.left() + toolbarMargin);
    return {x, y, w, h};
}

void SelectionCanvas::repositionToolbar(const QRectF &selection)
{
    if (!m_toolbar)
        return;
    const QRectF screen = screenFrame(QPointF(selection.center().x(), minY(selection)));
    const QRectF frame = toolbarFrame(selection, m_toolbar->fittingWidth(), screen);
    if (SelectorSurface *host = surface(frame.center()))
        m_toolbar->place(*host, frame);
}

QRectF SelectionCanvas::screenFrame(QPointF near) const
{
    for (const ScreenSnapshot &snapshot : m_snapshots) {
        if (holds(snapshot.frame, near))
            return snapshot.frame;
    }
    if (m_snapshots.isEmpty())
        return m_bounds;
    QRectF best = m_snapshots.first().frame;
    qreal bestDistance = distance(best, near);
    for (const ScreenSnapshot &snapshot : m_snapshots) {
        const qreal d = distance(snapshot.frame, near);
        if (d < bestDistance) {
            best = snapshot.frame;
            bestDistance = d;
        }
    }
    return best;
}

SelectorSurface *SelectionCanvas::surface(QPointF near) const
{
    const QRectF frame = screenFrame(near);
    for (SelectorSurface *candidate : m_surfaces) {
        if (candidate->screenFrame() == frame)
            return candidate;
    }
    return m_surfaces.isEmpty() ? nullptr : m_surfaces.first();
}

QString SelectionCanvas::sizeText(const QSize &pixels)
{
    return QStringLiteral("%1 × %2").arg(pixels.width()).arg(pixels.height());
}

QRectF SelectionCanvas::sizeBadgeFrame(const QRectF &selection, const QSizeF &textSize, const QRectF &screen)
{
    const qreal w = std::ceil(textSize.width()) + 16;
    const qreal h = std::ceil(textSize.height()) + 8;
    const qreal x = std::min(selection.right() + 6, screen.right() - w - 4);
    const qreal y = std::min(maxY(selection) - h, maxY(screen) - h - 4);
    return {x, y, w, h};
}

void SelectionCanvas::updateSizeReadout(const QRectF &rect)
{
    const double s = RegionCompositor::outputScale(rect, m_snapshots);
    const QSize pixels(int(std::lround(rect.width() * s)), int(std::lround(rect.height() * s)));
    if (m_toolbar)
        m_toolbar->setCurrentSize(pixels);
    const QRectF screen = screenFrame(QPointF(rect.right(), maxY(rect)));
    const QString text = sizeText(pixels);
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->renderSizeReadout(text, rect, screen);
}

void SelectionCanvas::renderLiveDrag(const QRectF &rect)
{
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->renderLiveDrag(rect);
}

void SelectionCanvas::handleToolbarAction(const EditorAction &action)
{
    if (action.kind() == EditorAction::Kind::setSize) {
        setSizeInPixels(std::get<QSize>(action.payload()));
        return;
    }
    m_editor->handleToolbarAction(action);
}

void SelectionCanvas::setSizeInPixels(const QSize &pixels)
{
    if (!m_armedRect)
        return;
    const QRectF rect = *m_armedRect;
    const double s = RegionCompositor::outputScale(rect, m_snapshots);
    const qreal width = std::min(std::max(pixels.width() / s, minimumSide), m_bounds.right() - rect.left());
    const qreal height = std::min(std::max(pixels.height() / s, minimumSide), maxY(rect) - minY(m_bounds));
    // The top left corner stays where it is.
    applyResize(Edges::of(QRectF(rect.left(), maxY(rect) - height, width, height)));
}

void SelectionCanvas::editorOutput(const EditorAction &action)
{
    if (m_armedRect && action.kind() != EditorAction::Kind::close)
        emitResult(RegionResult::selected(*m_armedRect, m_snapshots, action,
                                          m_editor->annotationsInImageSpace(*m_armedRect)));
    else
        emitResult(RegionResult::cancelled());
}

void SelectionCanvas::emitResult(const RegionResult &result)
{
    qCDebug(lcCanvas, "result: %s", qUtf8Printable(result.description()));
    if (m_onResult)
        m_onResult(result);
}

void SelectionCanvas::renderPreview(const std::optional<QPainterPath> &path, const QColor &stroke, qreal width,
                                    const QColor &fill)
{
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->renderPreview(path, stroke, width, fill);
}

void SelectionCanvas::renderMosaicPreview(const std::optional<QRectF> &frame, qreal block)
{
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->renderMosaicPreview(frame, block);
}

void SelectionCanvas::renderAnnotations(const QList<glimpso::Annotation> &annotations)
{
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->renderAnnotations(annotations);
}

void SelectionCanvas::renderAnnotationSelection(const std::optional<QRectF> &rect)
{
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->renderAnnotationSelection(rect);
}

void SelectionCanvas::renderPointHandles(const std::optional<QList<QPointF>> &points)
{
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->renderPointHandles(points);
}

void SelectionCanvas::showHUD(const QString &text, QPointF near)
{
    const QRectF screen = screenFrame(near);
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->showHUD(text, near, screen);
}

void SelectionCanvas::invalidateCursors()
{
    for (SelectorSurface *surface : std::as_const(m_surfaces))
        surface->invalidateCursors();
}

std::optional<glimpso::TextHost> SelectionCanvas::textHost(QPointF near)
{
    SelectorSurface *host = surface(near);
    return host ? host->textHost() : std::nullopt;
}
