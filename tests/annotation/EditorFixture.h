#pragma once

#include "AnnotationFakes.h"
#include "SettingsFakes.h"

#include "annotation/AnnotationEditor.h"
#include "settings/AppSettings.h"

#include <gtest/gtest.h>

#include <cmath>

// An editor over a 400 by 300 canvas at the origin, wired to a recording
// surface and toolbar, with settings in memory.
class EditorFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        glimpso::AnnotationEditor::setLastTextOptions({});
        editor = std::make_unique<glimpso::AnnotationEditor>(settings);
        editor->setSurface(&surface);
        editor->setToolbar(&toolbar);
        editor->setCanvas(canvas);
        editor->setOnOutput([this](const EditorAction &action) { outputs.append(action.kind()); });
        editor->setOnToolChange([this](glimpso::Tool tool) { toolChanges.append(tool); });
    }

    void TearDown() override { glimpso::AnnotationEditor::setLastTextOptions({}); }

    void selectTool(glimpso::Tool tool) { editor->handleToolbarAction(EditorAction::selectTool(tool)); }

    // Press, drag through each point, release at the last.
    void drag(std::initializer_list<QPointF> points, Qt::KeyboardModifiers modifiers = {})
    {
        auto it = points.begin();
        editor->mouseDown(*it);
        for (++it; it != points.end(); ++it)
            editor->mouseDragged(*it, modifiers);
        editor->mouseUp(*(points.end() - 1));
    }

    void click(QPointF p)
    {
        editor->mouseDown(p);
        editor->mouseUp(p);
    }

    // Opens a text field with the text tool at p, with a host that maps
    // rectangles unchanged.
    FakeTextField *openTextField(QPointF p)
    {
        surface.host = glimpso::TextHost{&textHost, [](const QRectF &r) { return r; }};
        selectTool(glimpso::Tool::text);
        editor->mouseDown(p);
        editor->mouseUp(p);
        return textHost.field.get();
    }

    static void expectPoint(QPointF actual, QPointF expected, double tolerance = 1e-6)
    {
        EXPECT_NEAR(actual.x(), expected.x(), tolerance);
        EXPECT_NEAR(actual.y(), expected.y(), tolerance);
    }

    static void expectRect(const QRectF &actual, const QRectF &expected, double tolerance = 1e-6)
    {
        EXPECT_NEAR(actual.left(), expected.left(), tolerance);
        EXPECT_NEAR(actual.top(), expected.top(), tolerance);
        EXPECT_NEAR(actual.width(), expected.width(), tolerance);
        EXPECT_NEAR(actual.height(), expected.height(), tolerance);
    }

    const QRectF canvas{0, 0, 400, 300};
    MemorySettingsStorage storage;
    InertLoginItem loginItem;
    AppSettings settings{storage, loginItem};
    RecordingSurface surface;
    RecordingToolbar toolbar;
    FakeTextHost textHost;
    std::unique_ptr<glimpso::AnnotationEditor> editor;
    QList<EditorAction::Kind> outputs;
    QList<glimpso::Tool> toolChanges;
};
