#pragma once

#include "annotation/AnnotationSurface.h"
#include "annotation/AnnotationToolbar.h"
#include "annotation/TextEntryField.h"
#include "annotation/TextEntryHost.h"

#include <QList>
#include <QStringList>

#include <memory>
#include <optional>

// A surface that records what the annotation editor asks it to show: the last
// value of each call, and the names of all calls in order.
struct RecordingSurface : glimpso::AnnotationSurface {
    struct Preview {
        std::optional<QPainterPath> path;
        QColor stroke;
        qreal width = 0;
        QColor fill;
    };
    struct Hud {
        QString text;
        QPointF near;
    };

    QStringList calls;
    std::optional<Preview> preview;
    std::optional<std::optional<QRectF>> mosaicPreview;
    qreal mosaicBlock = 0;
    std::optional<QList<glimpso::Annotation>> shown;
    std::optional<std::optional<QRectF>> selection;
    std::optional<std::optional<QList<QPointF>>> pointHandles;
    QList<Hud> huds;
    int cursorInvalidations = 0;
    // What textHost answers; none means text entry can't start here.
    std::optional<glimpso::TextHost> host;

    void renderPreview(const std::optional<QPainterPath> &path, const QColor &stroke, qreal width,
                       const QColor &fill) override
    {
        calls << QStringLiteral("renderPreview");
        preview = Preview{path, stroke, width, fill};
    }
    void renderMosaicPreview(const std::optional<QRectF> &frame, qreal block) override
    {
        calls << QStringLiteral("renderMosaicPreview");
        mosaicPreview = frame;
        mosaicBlock = block;
    }
    void renderAnnotations(const QList<glimpso::Annotation> &annotations) override
    {
        calls << QStringLiteral("renderAnnotations");
        shown = annotations;
    }
    void renderAnnotationSelection(const std::optional<QRectF> &rect) override
    {
        calls << QStringLiteral("renderAnnotationSelection");
        selection = rect;
    }
    void renderPointHandles(const std::optional<QList<QPointF>> &points) override
    {
        calls << QStringLiteral("renderPointHandles");
        pointHandles = points;
    }
    void showHUD(const QString &text, QPointF near) override
    {
        calls << QStringLiteral("showHUD");
        huds.append({text, near});
    }
    void invalidateCursors() override
    {
        calls << QStringLiteral("invalidateCursors");
        ++cursorInvalidations;
    }
    std::optional<glimpso::TextHost> textHost(QPointF) override
    {
        calls << QStringLiteral("textHost");
        return host;
    }
};

// A toolbar that records what the editor tells it.
struct RecordingToolbar : glimpso::AnnotationToolbar {
    QList<glimpso::Tool> tools;
    QList<QColor> colors;
    QList<std::optional<glimpso::TextOptions>> textOptions;

    void setSelectedTool(glimpso::Tool tool) override { tools.append(tool); }
    void setSelectedColor(const QColor &color) override { colors.append(color); }
    void showTextOptions(const std::optional<glimpso::TextOptions> &options) override { textOptions.append(options); }
};

// A text field without a widget: the test types into `typed`.
struct FakeTextField : glimpso::TextEntryField {
    QString typed;
    QRectF frame;
    QList<QRectF> frames;
    std::optional<glimpso::TextOptions> options;
    QColor color;

    QString text() const override { return typed; }
    void setFrame(const QRectF &localFrame) override
    {
        frame = localFrame;
        frames.append(localFrame);
    }
    void setLook(const glimpso::TextOptions &look, const QColor &textColor) override
    {
        options = look;
        color = textColor;
    }
};

// A host view for text fields that keeps the one it opened.
struct FakeTextHost : glimpso::TextEntryHost {
    std::unique_ptr<FakeTextField> field;
    QRectF openedAt;
    int opened = 0;
    int closed = 0;

    glimpso::TextEntryField *openField(const QRectF &localFrame) override
    {
        ++opened;
        openedAt = localFrame;
        field = std::make_unique<FakeTextField>();
        field->frame = localFrame;
        return field.get();
    }
    void closeField(glimpso::TextEntryField *closing) override
    {
        if (closing == field.get()) {
            ++closed;
            field.reset();
        }
    }
};
