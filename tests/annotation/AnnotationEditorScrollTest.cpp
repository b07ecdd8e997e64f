#include "EditorFixture.h"

using namespace glimpso;

namespace {

const ScrollInput up{1, false, ScrollInput::Phase::none};
const ScrollInput down{-1, false, ScrollInput::Phase::none};

} // namespace

class EditorScroll : public EditorFixture {
protected:
    void SetUp() override
    {
        EditorFixture::SetUp();
        editor->setLastMouseLocation({77, 88});
    }

    void scroll(const ScrollInput &input, int times)
    {
        for (int i = 0; i < times; ++i)
            EXPECT_TRUE(editor->scrollWheel(input));
    }

    QString lastHud() const { return surface.huds.isEmpty() ? QString() : surface.huds.last().text; }
};

// Row 1: a selected bubble, or the newest one while the counter is the tool.

TEST_F(EditorScroll, SelectedBubbleGrowsAndSetsTheRadiusOfTheNext)
{
    selectTool(Tool::sequence);
    click({50, 50});
    selectTool(Tool::move);
    click({50, 50});
    ASSERT_TRUE(editor->hasSelection());
    EXPECT_TRUE(editor->scrollSizesSelection());
    EXPECT_TRUE(editor->scrollWheel(up));
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Sequence>()->radius, 15);
    EXPECT_EQ(editor->sequenceRadius(), 15);
    EXPECT_EQ(lastHud(), QStringLiteral("Bubble 15pt"));
    EXPECT_EQ(surface.huds.last().near, QPointF(77, 88));
    // The outline follows the grown bubble.
    expectRect(**surface.selection, QRectF(35, 35, 30, 30));
}

TEST_F(EditorScroll, BubbleRadiusStaysWithin8And40)
{
    selectTool(Tool::sequence);
    click({50, 50});
    scroll(up, 40);
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Sequence>()->radius, 40);
    EXPECT_EQ(lastHud(), QStringLiteral("Bubble 40pt"));
    scroll(down, 50);
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Sequence>()->radius, 8);
    EXPECT_EQ(lastHud(), QStringLiteral("Bubble 8pt"));
}

TEST_F(EditorScroll, TheNewestBubbleIsOnlyATargetWhileTheCounterIsTheTool)
{
    selectTool(Tool::sequence);
    click({50, 50});
    selectTool(Tool::rect);
    EXPECT_FALSE(editor->scrollSizesSelection());
    EXPECT_TRUE(editor->scrollWheel(up));
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Sequence>()->radius, 14);
    EXPECT_EQ(lastHud(), QStringLiteral("Width 4pt"));
}

// Row 2: a selected text.

TEST_F(EditorScroll, SelectedTextChangesItsSizeWithin10And80)
{
    FakeTextField *field = openTextField({50, 50});
    field->typed = QStringLiteral("Size me");
    selectTool(Tool::move);
    click(editor->annotations()[0].boundingRect().center());
    ASSERT_TRUE(editor->hasSelection());
    EXPECT_TRUE(editor->scrollSizesSelection());
    EXPECT_TRUE(editor->scrollWheel(up));
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Text>()->options.size, 21);
    EXPECT_EQ(lastHud(), QStringLiteral("Text 21pt"));
    EXPECT_EQ(editor->textOptions().size, 20); // the next text keeps its size
    scroll(up, 70);
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Text>()->options.size, 80);
    scroll(down, 80);
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Text>()->options.size, 10);
    EXPECT_EQ(lastHud(), QStringLiteral("Text 10pt"));
}

// Row 3: no tool.

TEST_F(EditorScroll, WithNoToolTheWheelIsNotTaken)
{
    EXPECT_FALSE(editor->scrollWheel(up));
    EXPECT_TRUE(surface.huds.isEmpty());
}

// Row 4: the text tool or an open field.

TEST_F(EditorScroll, TextToolSizesTheNextTextWithin10And80)
{
    selectTool(Tool::text);
    EXPECT_TRUE(editor->scrollWheel(down));
    EXPECT_EQ(editor->textOptions().size, 19);
    EXPECT_EQ(AnnotationEditor::lastTextOptions().size, 19);
    EXPECT_EQ(toolbar.textOptions.last()->size, 19);
    EXPECT_EQ(lastHud(), QStringLiteral("Text 19pt"));
    scroll(down, 20);
    EXPECT_EQ(editor->textOptions().size, 10);
    scroll(up, 80);
    EXPECT_EQ(editor->textOptions().size, 80);
}

TEST_F(EditorScroll, AnOpenFieldTakesTheWheelAndRestylesAtOnce)
{
    FakeTextField *field = openTextField({50, 50});
    ASSERT_NE(field, nullptr);
    editor->setCurrentTool(Tool::pencil); // the tool doesn't matter while a field is open
    EXPECT_TRUE(editor->scrollSizesSelection());
    EXPECT_TRUE(editor->scrollWheel(up));
    EXPECT_EQ(editor->textOptions().size, 21);
    EXPECT_EQ(field->options->size, 21);
    EXPECT_EQ(lastHud(), QStringLiteral("Text 21pt"));
}

// Row 5: mosaic.

TEST_F(EditorScroll, MosaicBlockWithin4And80AndTheRunningMosaicFollows)
{
    selectTool(Tool::mosaic);
    EXPECT_TRUE(editor->scrollWheel(up));
    EXPECT_EQ(editor->mosaicBlock(), 17);
    EXPECT_EQ(lastHud(), QStringLiteral("Pixel 17pt"));
    editor->mouseDown({10, 10});
    editor->mouseDragged({60, 60}, {});
    EXPECT_TRUE(editor->scrollWheel(up));
    EXPECT_EQ(surface.mosaicBlock, 18);
    editor->mouseUp({60, 60});
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Mosaic>()->blockSize, 18);
    scroll(up, 70);
    EXPECT_EQ(editor->mosaicBlock(), 80);
    scroll(down, 80);
    EXPECT_EQ(editor->mosaicBlock(), 4);
    EXPECT_EQ(lastHud(), QStringLiteral("Pixel 4pt"));
}

// Row 6: the counter with no bubble yet.

TEST_F(EditorScroll, CounterToolSizesTheNextBubbleWithin8And40)
{
    selectTool(Tool::sequence);
    EXPECT_TRUE(editor->scrollSizesSelection());
    EXPECT_TRUE(editor->scrollWheel(up));
    EXPECT_EQ(editor->sequenceRadius(), 15);
    EXPECT_EQ(lastHud(), QStringLiteral("Bubble 15pt"));
    scroll(up, 30);
    EXPECT_EQ(editor->sequenceRadius(), 40);
    scroll(down, 40);
    EXPECT_EQ(editor->sequenceRadius(), 8);
    click({100, 100});
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Sequence>()->radius, 8);
}

// Row 7: every other tool.

TEST_F(EditorScroll, OtherToolsSetTheStrokeWidthWithin1And30AndStoreIt)
{
    selectTool(Tool::arrow);
    EXPECT_FALSE(editor->scrollSizesSelection());
    EXPECT_TRUE(editor->scrollWheel(up));
    EXPECT_EQ(editor->strokeWidth(), 4);
    EXPECT_EQ(settings.strokeWidth(), 4);
    EXPECT_EQ(storage.values.value(QStringLiteral("settings.editor.strokeWidth")).toDouble(), 4);
    EXPECT_EQ(surface.preview->width, 4);
    EXPECT_EQ(lastHud(), QStringLiteral("Width 4pt"));
    scroll(up, 40);
    EXPECT_EQ(editor->strokeWidth(), 30);
    scroll(down, 40);
    EXPECT_EQ(editor->strokeWidth(), 1);
    EXPECT_EQ(lastHud(), QStringLiteral("Width 1pt"));
    // A new editor starts from the stored width.
    AnnotationEditor next(settings);
    EXPECT_EQ(next.strokeWidth(), 1);
}

TEST_F(EditorScroll, ARunningShapeTakesTheNewWidth)
{
    selectTool(Tool::rect);
    editor->mouseDown({10, 10});
    editor->mouseDragged({60, 60}, {});
    editor->scrollWheel(up);
    editor->scrollWheel(up);
    editor->mouseUp({60, 60});
    EXPECT_EQ(editor->annotations()[0], Annotation::rect({10, 10, 50, 50}, QColor(0xFF, 0x3B, 0x30), 5));
}

TEST_F(EditorScroll, MoveToolChangesTheWidthAndLeavesASelectedShape)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {60, 60}});
    selectTool(Tool::move);
    click({10, 30});
    ASSERT_TRUE(editor->hasSelection());
    EXPECT_FALSE(editor->scrollSizesSelection());
    EXPECT_TRUE(editor->scrollWheel(up));
    EXPECT_EQ(lastHud(), QStringLiteral("Width 4pt"));
    EXPECT_EQ(editor->strokeWidth(), 4);
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Rect>()->width, 3);
}

// Steps.

TEST_F(EditorScroll, ZeroStepsAreTakenAndChangeNothing)
{
    selectTool(Tool::rect);
    EXPECT_TRUE(editor->scrollWheel({3, true, ScrollInput::Phase::began}));
    EXPECT_TRUE(editor->scrollWheel({5, false, ScrollInput::Phase::momentum}));
    EXPECT_TRUE(editor->scrollWheel({0, false, ScrollInput::Phase::none}));
    editor->setCurrentTool(Tool::none);
    EXPECT_TRUE(editor->scrollWheel({0, false, ScrollInput::Phase::none}));
    EXPECT_EQ(editor->strokeWidth(), 3);
    EXPECT_TRUE(surface.huds.isEmpty());
}

TEST_F(EditorScroll, PreciseTravelGathersSixPointsToAStep)
{
    selectTool(Tool::rect);
    editor->scrollWheel({4, true, ScrollInput::Phase::began});
    EXPECT_EQ(editor->strokeWidth(), 3);
    editor->scrollWheel({4, true, ScrollInput::Phase::changed}); // 8: one step, 2 kept
    EXPECT_EQ(editor->strokeWidth(), 4);
    editor->scrollWheel({10, true, ScrollInput::Phase::changed}); // 12: two steps
    EXPECT_EQ(editor->strokeWidth(), 6);
    editor->scrollWheel({5, true, ScrollInput::Phase::began}); // a new gesture starts from 0
    EXPECT_EQ(editor->strokeWidth(), 6);
}
