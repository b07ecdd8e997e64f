#include "EditorFixture.h"

#include "annotation/TextLook.h"

#include <cmath>

using namespace glimpso;

class EditorText : public EditorFixture {
protected:
    static double lineHeight(const TextOptions &options = {})
    {
        return TextLook::boxSize(QStringLiteral("Ag"), options).height();
    }
    // Where the field stands for a text whose box has its top-left at `origin`.
    static QRectF fieldFrame(QPointF origin, double width, const TextOptions &options = {})
    {
        const QPointF inset = TextLook::insets(options);
        const double h = std::ceil(TextLook::measure(QStringLiteral("Ag"), TextLook::font(options)).height());
        return {origin.x() + inset.x() - 2, origin.y() - inset.y() - h, width, h};
    }
};

TEST_F(EditorText, TheBoxIsCentredOnTheClickAndStartsAtIt)
{
    FakeTextField *field = openTextField({100, 100});
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(textHost.opened, 1);
    const QPointF origin(100, 100 + lineHeight() / 2);
    expectRect(textHost.openedAt, fieldFrame(origin, 40));
    ASSERT_TRUE(field->options.has_value());
    EXPECT_EQ(*field->options, TextOptions{});
    EXPECT_EQ(field->color, QColor(0xFF, 0x3B, 0x30));

    field->typed = QStringLiteral("Hello");
    editor->commitPendingText();
    ASSERT_EQ(editor->annotations().size(), 1);
    const auto *text = editor->annotations()[0].as<Annotation::Text>();
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->string, QStringLiteral("Hello"));
    expectPoint(text->origin, origin);
    EXPECT_EQ(text->options, TextOptions{});
    EXPECT_FALSE(editor->hasTextField());
    EXPECT_EQ(textHost.closed, 1);
}

TEST_F(EditorText, TheFieldIsPlacedThroughTheHostsMapping)
{
    surface.host = TextHost{&textHost, [](const QRectF &r) { return r.translated(-100, -50); }};
    selectTool(Tool::text);
    click({150, 120});
    ASSERT_TRUE(editor->hasTextField());
    expectRect(textHost.openedAt, fieldFrame({150, 120 + lineHeight() / 2}, 40).translated(-100, -50));
}

TEST_F(EditorText, WithoutAHostNoFieldOpens)
{
    selectTool(Tool::text);
    EXPECT_TRUE(editor->mouseDown({100, 100}));
    EXPECT_FALSE(editor->hasTextField());
    EXPECT_TRUE(surface.calls.contains(QStringLiteral("textHost")));
}

TEST_F(EditorText, ReturnWithoutTypingAddsNothingAndNoUndoStep)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {50, 50}});
    editor->handleToolbarAction(EditorAction::undo());
    openTextField({100, 100});
    editor->commitPendingText(); // what the field does on Return
    EXPECT_TRUE(editor->annotations().isEmpty());
    EXPECT_EQ(editor->redoStack().size(), 1);
    EXPECT_FALSE(editor->hasTextField());
}

TEST_F(EditorText, TypingThenEscapeAddsNothing)
{
    FakeTextField *field = openTextField({100, 100});
    field->typed = QStringLiteral("gone");
    editor->endTextEdit();
    EXPECT_FALSE(editor->hasTextField());
    EXPECT_EQ(textHost.closed, 1);
    EXPECT_TRUE(editor->annotations().isEmpty());
}

TEST_F(EditorText, TypingThenAClickElsewhereAddsTheTextAndOpensANewField)
{
    FakeTextField *field = openTextField({100, 100});
    field->typed = QStringLiteral("first");
    click({200, 200});
    ASSERT_EQ(editor->annotations().size(), 1);
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Text>()->string, QStringLiteral("first"));
    EXPECT_TRUE(editor->hasTextField());
    EXPECT_EQ(textHost.opened, 2);
}

TEST_F(EditorText, ChoosingAnotherToolCommitsTheTextFirst)
{
    FakeTextField *field = openTextField({100, 100});
    field->typed = QStringLiteral("kept");
    selectTool(Tool::arrow);
    EXPECT_FALSE(editor->hasTextField());
    ASSERT_EQ(editor->annotations().size(), 1);
    EXPECT_EQ(toolbar.textOptions.last(), std::nullopt);
}

TEST_F(EditorText, APressWithNoToolCommitsTheText)
{
    FakeTextField *field = openTextField({100, 100});
    field->typed = QStringLiteral("kept");
    editor->setCurrentTool(Tool::none);
    EXPECT_TRUE(editor->mouseDown({300, 250}));
    EXPECT_EQ(editor->annotations().size(), 1);
}

TEST_F(EditorText, AnOutputCommitsTheTextFirst)
{
    FakeTextField *field = openTextField({100, 100});
    field->typed = QStringLiteral("kept");
    qsizetype atOutput = -1;
    editor->setOnOutput([&](const EditorAction &) { atOutput = editor->annotations().size(); });
    editor->handleToolbarAction(EditorAction::save());
    EXPECT_EQ(atOutput, 1);
}

TEST_F(EditorText, AResizeDrag30RightAnd30DownAdds20)
{
    FakeTextField *field = openTextField({100, 100});
    editor->beginTextResize();
    editor->resizeTextBy({15, 15});
    editor->resizeTextBy({30, 30}); // travel since the start of the drag
    EXPECT_EQ(editor->textOptions().size, 40);
    EXPECT_EQ(field->options->size, 40);
    EXPECT_EQ(surface.huds.last().text, QStringLiteral("Text 40pt"));
    editor->resizeTextBy({300, 0});
    EXPECT_EQ(editor->textOptions().size, 80);
    editor->beginTextResize();
    editor->resizeTextBy({-300, -300});
    EXPECT_EQ(editor->textOptions().size, 10);
}

TEST_F(EditorText, TheFieldGrowsWithTheTextAndStopsAtTheCanvasEdge)
{
    FakeTextField *field = openTextField({300, 100});
    const QPointF origin(300, 100 + lineHeight() / 2);
    field->typed = QStringLiteral("a");
    editor->textFieldChanged();
    EXPECT_EQ(field->frame.width(), 40); // at least 40
    field->typed = QStringLiteral("abcd");
    editor->textFieldChanged();
    const double w = TextLook::measure(field->typed, TextLook::font({})).width();
    ASSERT_GT(w + 8, 40);
    expectRect(field->frame, fieldFrame(origin, w + 8));
    field->typed = QString(60, QLatin1Char('W'));
    editor->textFieldChanged();
    EXPECT_EQ(field->frame.width(), 400 - 300 - 4);
}

TEST_F(EditorText, ColourAndStyleChangeTheOpenFieldAtOnce)
{
    FakeTextField *field = openTextField({100, 100});
    const QColor blue(0, 122, 255);
    editor->handleToolbarAction(EditorAction::selectColor(blue));
    EXPECT_EQ(field->color, blue);
    const TextOptions plate{24, TextStyle::background, TextFont::rounded()};
    editor->handleToolbarAction(EditorAction::setTextOptions(plate));
    EXPECT_EQ(*field->options, plate);
    expectRect(field->frame, fieldFrame({100, 100 + lineHeight() / 2}, 40, plate));
    field->typed = QStringLiteral("Blue");
    editor->commitPendingText();
    const auto *text = editor->annotations()[0].as<Annotation::Text>();
    EXPECT_EQ(text->color, blue);
    EXPECT_EQ(text->options, plate);
}

TEST_F(EditorText, MovingTheFrameMovesTheText)
{
    FakeTextField *field = openTextField({100, 100});
    const QRectF before = field->frame;
    editor->moveTextBy({25, -10});
    expectRect(field->frame, before.translated(25, -10));
    field->typed = QStringLiteral("moved");
    editor->commitPendingText();
    expectPoint(editor->annotations()[0].as<Annotation::Text>()->origin, {125, 90 + lineHeight() / 2});
}

TEST_F(EditorText, ATextFieldIsNotRecolouredIntoTheSelection)
{
    selectTool(Tool::sequence);
    click({20, 20});
    FakeTextField *field = openTextField({100, 100});
    editor->setCurrentTool(Tool::sequence); // the newest bubble would be the target without the field
    editor->handleToolbarAction(EditorAction::selectColor(QColor(0, 0, 255)));
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Sequence>()->color, QColor(0xFF, 0x3B, 0x30));
    EXPECT_EQ(field->color, QColor(0, 0, 255));
}
