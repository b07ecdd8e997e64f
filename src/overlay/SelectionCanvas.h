#pragma once

#include "acquire/RegionResult.h"
#include "acquire/ScreenSnapshot.h"
#include "annotation/AnnotationEditor.h"
#include "annotation/AnnotationSurface.h"
#include "annotation/Handle.h"
#include "annotation/TextHost.h"
#include "appbase/CaptureIntent.h"
#include "overlay/CanvasToolbar.h"

#include <QList>
#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSize>

#include <functional>
#include <memory>
#include <optional>

class AppSettings;
class SelectorSurface;

// The one selection of an on-screen capture, spanning every display. The
// views hand it pointer and key events already in global points (y up); it
// keeps the rectangle, decides what a press means (a new drag, a handle, a
// move of the selection, or a gesture for the embedded annotation editor),
// places the toolbar, and ends with one RegionResult. No windows here: the
// displays are reached through SelectorSurface.
class SelectionCanvas : public QObject, public glimpso::AnnotationSurface
{
    Q_OBJECT

public:
    static constexpr qreal handleHitSide = 26;
    static constexpr qreal minimumSide = 4;
    static constexpr qreal toolbarMargin = 18;
    static constexpr qreal toolbarHeight = 40;
    static constexpr qreal toolbarMinimumWidth = 480;

    using ToolbarFactory =
        std::function<std::unique_ptr<CanvasToolbar>(std::function<void(const EditorAction &)> handler)>;

    SelectionCanvas(QList<ScreenSnapshot> snapshots, CaptureIntent intent, AppSettings &settings,
                    std::function<void(const RegionResult &)> onResult, QObject *parent = nullptr);
    ~SelectionCanvas() override;

    // Makes the toolbar the first time a selection arms; without one no toolbar shows.
    void setToolbarFactory(ToolbarFactory factory) { m_toolbarFactory = std::move(factory); }
    void addSurface(SelectorSurface *surface) { m_surfaces.append(surface); }
    const QList<SelectorSurface *> &surfaces() const { return m_surfaces; }

    const QList<ScreenSnapshot> &snapshots() const { return m_snapshots; }
    QRectF bounds() const { return m_bounds; }
    CaptureIntent intent() const { return m_intent; }
    glimpso::AnnotationEditor &editor() { return *m_editor; }
    const glimpso::AnnotationEditor &editor() const { return *m_editor; }
    CanvasToolbar *toolbar() const { return m_toolbar.get(); }

    bool isArmed() const { return m_armedRect.has_value(); }
    std::optional<QRectF> armedRect() const { return m_armedRect; }
    // The rectangle of the running first drag, if one runs.
    std::optional<QRectF> liveRect() const;

    void mouseDown(QPointF point);
    void mouseDragged(QPointF point, Qt::KeyboardModifiers modifiers);
    void mouseUp(QPointF point);
    // Whether the key was used; the view passes it on otherwise.
    bool keyDown(const Hotkey &key, const QString &text = {});
    // Escape, from a key press on an overlay or relayed from the global grab:
    // it peels the text box, then the annotation selection, then the capture.
    void escape();
    bool scrollWheel(const glimpso::ScrollInput &input);
    // A modifier key went down or up: a running pencil stroke turns straight or back.
    void modifiersChanged(Qt::KeyboardModifiers modifiers);
    void mouseMoved(QPointF point);

    // The pointer shapes of the armed selection, highest priority last:
    // the editor's, then the eight handles. Absent while not armed.
    std::optional<QList<glimpso::CursorRect>> cursorRects() const;

    // The toolbar's own actions; the size chip's new size in physical pixels
    // stays here, everything else goes to the editor.
    void handleToolbarAction(const EditorAction &action);

    // The display frame nearest `point`: the first that holds it, else the
    // closest (the earlier on a tie), else `bounds` without displays.
    QRectF screenFrame(QPointF near) const;
    // The surface showing screenFrame(near), else the first, else none.
    SelectorSurface *surface(QPointF near) const;

    // Where the toolbar goes for `selection`, in global points: below it,
    // else above, else inside its lower edge; centred and kept within `screen`.
    static QRectF toolbarFrame(const QRectF &selection, qreal fittingWidth, const QRectF &screen);
    // Where the size badge goes for a selection, within `screen`.
    static QRectF sizeBadgeFrame(const QRectF &selection, const QSizeF &textSize, const QRectF &screen);
    static QString sizeText(const QSize &pixels);

    // AnnotationSurface, passed on to every display.
    void renderPreview(const std::optional<QPainterPath> &path, const QColor &stroke, qreal width,
                       const QColor &fill) override;
    void renderMosaicPreview(const std::optional<QRectF> &frame, qreal block) override;
    void renderAnnotations(const QList<glimpso::Annotation> &annotations) override;
    void renderAnnotationSelection(const std::optional<QRectF> &rect) override;
    void renderPointHandles(const std::optional<QList<QPointF>> &points) override;
    void showHUD(const QString &text, QPointF near) override;
    void invalidateCursors() override;
    // The display nearest the point hosts the text box.
    std::optional<glimpso::TextHost> textHost(QPointF near) override;

private:
    void renderLiveDrag(const QRectF &rect);
    void applyResize(const glimpso::Edges &edges);
    void arm(const QRectF &rect);
    void showToolbar();
    void repositionToolbar(const QRectF &selection);
    void updateSizeReadout(const QRectF &rect);
    void editorOutput(const EditorAction &action);
    void setSizeInPixels(const QSize &pixels);
    void emitResult(const RegionResult &result);

    QList<ScreenSnapshot> m_snapshots;
    QRectF m_bounds;
    CaptureIntent m_intent;
    AppSettings &m_settings;
    std::function<void(const RegionResult &)> m_onResult;
    QList<SelectorSurface *> m_surfaces;
    std::unique_ptr<glimpso::AnnotationEditor> m_editor;
    ToolbarFactory m_toolbarFactory;
    std::unique_ptr<CanvasToolbar> m_toolbar;
    bool m_toolbarShown = false;

    std::optional<QPointF> m_startPoint;
    std::optional<QPointF> m_currentPoint;
    std::optional<QRectF> m_armedRect;
    std::optional<glimpso::Handle> m_activeHandle;
    QRectF m_resizeStartRect;
    QPointF m_resizeStartMouse;
    std::optional<QRectF> m_moveStartRect;
    QPointF m_moveStartMouse;
};
