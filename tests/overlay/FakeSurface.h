#pragma once

#include "AnnotationFakes.h"
#include "overlay/CanvasToolbar.h"
#include "overlay/SelectorSurface.h"

#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>

// A display of the overlay without a window: it records what it was asked to show.
class FakeSurface : public SelectorSurface
{
public:
    explicit FakeSurface(QRectF frame) : m_frame(frame) {}

    QRectF screenFrame() const override { return m_frame; }
    void renderLiveDrag(const QRectF &rect) override
    {
        liveDrags << rect;
        calls << QStringLiteral("liveDrag");
    }
    void renderSelection(const QRectF &rect, bool armed) override
    {
        selections << rect;
        lastArmed = armed;
        calls << QStringLiteral("selection");
    }
    void renderSizeReadout(const QString &text, const QRectF &rect, const QRectF &screen) override
    {
        readoutText = text;
        readoutRect = rect;
        readoutScreen = screen;
        calls << QStringLiteral("readout");
    }
    void invalidateCursors() override { calls << QStringLiteral("cursors"); }
    void renderPreview(const std::optional<QPainterPath> &, const QColor &, qreal, const QColor &) override
    {
        calls << QStringLiteral("preview");
    }
    void renderMosaicPreview(const std::optional<QRectF> &, qreal) override { calls << QStringLiteral("mosaic"); }
    void renderAnnotations(const QList<glimpso::Annotation> &) override { calls << QStringLiteral("annotations"); }
    void renderAnnotationSelection(const std::optional<QRectF> &) override { calls << QStringLiteral("outline"); }
    void renderPointHandles(const std::optional<QList<QPointF>> &) override { calls << QStringLiteral("points"); }
    void showHUD(const QString &text, QPointF near, const QRectF &screen) override
    {
        hudNear = near;
        hudText = text;
        hudScreen = screen;
    }
    // Text fields open in the fake host, at the global rectangle itself.
    std::optional<glimpso::TextHost> textHost() override
    {
        return glimpso::TextHost{&textFields, [](const QRectF &rect) { return rect; }};
    }

    FakeTextHost textFields;
    QRectF m_frame;
    QList<QRectF> liveDrags;
    QList<QRectF> selections;
    bool lastArmed = false;
    QString readoutText;
    QRectF readoutRect;
    QRectF readoutScreen;
    QString hudText;
    QRectF hudScreen;
    QPointF hudNear;
    QStringList calls;
};

// The toolbar without widgets: a fixed fitting width and a record of where it went.
class FakeToolbar : public CanvasToolbar
{
public:
    explicit FakeToolbar(qreal width) : width(width) {}

    qreal fittingWidth() const override { return width; }
    void place(SelectorSurface &surface, const QRectF &frame) override
    {
        host = &surface;
        placed = frame;
        ++placements;
    }
    void setCurrentSize(const QSize &pixels) override { size = pixels; }
    void setOnWidthChange(std::function<void()> onWidthChange) override { widthChanged = std::move(onWidthChange); }
    void setSelectedTool(glimpso::Tool tool) override { selectedTool = tool; }
    void setSelectedColor(const QColor &) override {}
    void showTextOptions(const std::optional<glimpso::TextOptions> &) override {}

    qreal width;
    SelectorSurface *host = nullptr;
    QRectF placed;
    int placements = 0;
    QSize size;
    std::function<void()> widthChanged;
    std::optional<glimpso::Tool> selectedTool;
};
