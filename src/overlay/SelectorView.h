#pragma once

#include "acquire/DesktopSpace.h"
#include "acquire/ScreenSnapshot.h"
#include "overlay/OverlayLook.h"
#include "annotation/AnnotationLayers.h"
#include "annotation/TextEntryHost.h"
#include "overlay/SelectorSurface.h"

#include <QPointer>
#include <QRectF>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class SelectionCanvas;

// One display's overlay window: the frozen screen at the display's own pixel
// density, the dim veil with its hole for the selection, the outline and its
// handles, the hint and the size badge. It turns its events into global
// points for the canvas and repaints only what a change touched, so a drag
// over a 4K display never redraws the whole picture.
class SelectorView : public QWidget, public SelectorSurface, public glimpso::TextEntryHost
{
    Q_OBJECT

public:
    SelectorView(SelectionCanvas *canvas, const ScreenSnapshot &snapshot, const DesktopSpace &space,
                 const QRect &qtGeometry, const OverlayLook &look);
    ~SelectorView() override;

    // Runs once, after the first paint of this window has reached the display server.
    void setOnFirstPaint(std::function<void()> onFirstPaint) { m_onFirstPaint = std::move(onFirstPaint); }

    // SelectorSurface
    QRectF screenFrame() const override { return m_frame; }
    void renderLiveDrag(const QRectF &rect) override;
    void renderSelection(const QRectF &rect, bool armed) override;
    void renderSizeReadout(const QString &text, const QRectF &rect, const QRectF &screen) override;
    void invalidateCursors() override;
    void renderPreview(const std::optional<QPainterPath> &path, const QColor &stroke, qreal width,
                       const QColor &fill) override;
    void renderMosaicPreview(const std::optional<QRectF> &frame, qreal block) override;
    void renderAnnotations(const QList<glimpso::Annotation> &annotations) override;
    void renderAnnotationSelection(const std::optional<QRectF> &rect) override;
    void renderPointHandles(const std::optional<QList<QPointF>> &points) override;
    void showHUD(const QString &text, QPointF near, const QRectF &screen) override;
    std::optional<glimpso::TextHost> textHost() override;
    std::optional<ToolbarHost> toolbarHost() override;

    // TextEntryHost: the field a text mark is typed into.
    glimpso::TextEntryField *openField(const QRectF &localFrame) override;
    void closeField(glimpso::TextEntryField *field) override;

    // What is on show, for tests: the selection in global points, whether it
    // is armed, whether the hint shows, and the badge's text and global frame.
    std::optional<QRectF> shownSelection() const { return m_selection; }
    bool handlesShown() const { return m_armed; }
    bool hintShown() const { return m_hintShown; }
    QString badgeText() const { return m_badgeText; }
    std::optional<QRectF> badgeFrame() const { return m_badge; }
    // The area the last change asked to repaint, in window coordinates.
    QRegion lastDamage() const { return m_lastDamage; }
    // The editor's marks, grips and readout as this window shows them.
    const glimpso::AnnotationLayers &layers() const { return *m_layers; }

    // Global points to this window's pixels-independent coordinates and back.
    QPointF toLocal(QPointF global) const;
    QRectF toLocal(const QRectF &global) const;
    QPointF toGlobal(QPointF local) const;

    // The overlay's own pointer: a cross that shows on any background.
    static const QCursor &crosshair();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void paintDim(QPainter &painter, const QRect &area) const;
    void paintSelection(QPainter &painter) const;
    void paintHint(QPainter &painter) const;
    void paintBadge(QPainter &painter) const;
    void paintFrozen(QPainter &painter, const QRect &area) const;
    void updateArea(const QRegion &area);
    // The local area the selection's outline and handles cover.
    QRect selectionDamage() const;
    QRect badgeDamage() const;
    QRect hintRect() const;
    void showSelection(const QRectF &rect, bool armed);
    void updateCursor(QPointF global);

    QPointer<SelectionCanvas> m_canvas;
    QImage m_image;
    QRectF m_frame;
    DesktopSpace m_space;
    QPoint m_qtOrigin;
    OverlayLook m_look;
    QFont m_hintFont;
    QFont m_badgeFont;

    std::optional<QRectF> m_selection;
    bool m_armed = false;
    bool m_hintShown = true;
    QString m_badgeText;
    std::optional<QRectF> m_badge;

    // What the annotation editor shows, in this window's coordinates (y
    // down), over the frozen screen and the veil, which it keeps in a cache.
    std::unique_ptr<glimpso::AnnotationLayers> m_layers;

    QRegion m_lastDamage;
    bool m_painted = false;
    bool m_reportedFirstPaint = false;
    std::function<void()> m_onFirstPaint;
};
