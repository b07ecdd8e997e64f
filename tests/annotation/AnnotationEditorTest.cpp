#include "EditorFixture.h"

#include "annotation/Annotation.h"

#include <cmath>
#include <numbers>

using namespace glimpso;

namespace {

const QColor red(0xFF, 0x3B, 0x30);
const QColor blue(0, 122, 255);

// One row of the drawing table: a tool, the pointer's path, the modifiers held
// and the mark that must be stored.
struct DrawCase {
    const char *name;
    Tool tool;
    QList<QPointF> path;
    Qt::KeyboardModifiers modifiers;
    Annotation expected;
};

const double r45 = std::sqrt(30.0 * 30.0 + 25.0 * 25.0) / std::numbers::sqrt2; // (30, 25) snapped to 45 degrees
const double r0 = std::sqrt(50.0 * 50.0 + 10.0 * 10.0);                        // (50, 10) snapped to 0 degrees

std::vector<DrawCase> drawCases()
{
    const QList<QPointF> wiggle{{10, 10}, {20, 14}, {30, 12}, {50, 30}};
    return {
        {"PencilFreehand", Tool::pencil, wiggle, {}, Annotation::pencil(wiggle, red, 3)},
        {"PencilShiftStraight", Tool::pencil, wiggle, Qt::ShiftModifier, Annotation::pencil({{10, 10}, {50, 30}}, red, 3)},
        {"PencilAltStraight", Tool::pencil, wiggle, Qt::AltModifier, Annotation::pencil({{10, 10}, {50, 30}}, red, 3)},
        {"HighlightFreehand", Tool::highlight, wiggle, {}, Annotation::highlight(wiggle, Annotation::highlightYellow(), 18)},
        {"HighlightShiftStraight", Tool::highlight, wiggle, Qt::ShiftModifier,
         Annotation::highlight({{10, 10}, {50, 30}}, Annotation::highlightYellow(), 18)},
        {"HighlightAltStraight", Tool::highlight, wiggle, Qt::AltModifier,
         Annotation::highlight({{10, 10}, {50, 30}}, Annotation::highlightYellow(), 18)},
        {"Line", Tool::line, {{100, 100}, {150, 110}}, {}, Annotation::line({100, 100}, {150, 110}, red, 3)},
        {"LineShiftSnapsFlat", Tool::line, {{100, 100}, {150, 110}}, Qt::ShiftModifier,
         Annotation::line({100, 100}, {100 + r0, 100}, red, 3)},
        {"LineAltSnapsFlat", Tool::line, {{100, 100}, {150, 110}}, Qt::AltModifier,
         Annotation::line({100, 100}, {100 + r0, 100}, red, 3)},
        {"Arrow", Tool::arrow, {{100, 100}, {130, 125}}, {}, Annotation::arrow({100, 100}, {130, 125}, red, 3)},
        {"ArrowShiftSnapsDiagonal", Tool::arrow, {{100, 100}, {130, 125}}, Qt::ShiftModifier,
         Annotation::arrow({100, 100}, {100 + r45, 100 + r45}, red, 3)},
        {"ArrowAltSnapsDiagonal", Tool::arrow, {{100, 100}, {130, 125}}, Qt::AltModifier,
         Annotation::arrow({100, 100}, {100 + r45, 100 + r45}, red, 3)},
        {"ArrowShiftSnapsUp", Tool::arrow, {{100, 100}, {104, 160}}, Qt::ShiftModifier,
         Annotation::arrow({100, 100}, {100, 100 + std::hypot(4.0, 60.0)}, red, 3)},
        {"Rect", Tool::rect, {{10, 10}, {60, 30}}, {}, Annotation::rect({10, 10, 50, 20}, red, 3)},
        {"RectBackwards", Tool::rect, {{60, 30}, {10, 10}}, {}, Annotation::rect({10, 10, 50, 20}, red, 3)},
        {"RectShiftSquare", Tool::rect, {{10, 10}, {60, 30}}, Qt::ShiftModifier, Annotation::rect({10, 10, 50, 50}, red, 3)},
        {"RectAltSquare", Tool::rect, {{10, 10}, {60, 30}}, Qt::AltModifier, Annotation::rect({10, 10, 50, 50}, red, 3)},
        {"RectShiftSquareBackwards", Tool::rect, {{60, 80}, {10, 70}}, Qt::ShiftModifier,
         Annotation::rect({10, 30, 50, 50}, red, 3)},
        {"Ellipse", Tool::ellipse, {{200, 200}, {240, 260}}, {}, Annotation::ellipse({200, 200, 40, 60}, red, 3)},
        {"EllipseShiftCircle", Tool::ellipse, {{200, 200}, {240, 260}}, Qt::ShiftModifier,
         Annotation::ellipse({200, 200, 60, 60}, red, 3)},
        {"EllipseAltCircle", Tool::ellipse, {{200, 200}, {240, 260}}, Qt::AltModifier,
         Annotation::ellipse({200, 200, 60, 60}, red, 3)},
        {"Mosaic", Tool::mosaic, {{20, 20}, {120, 70}}, {}, Annotation::mosaic({20, 20, 100, 50}, 16)},
        {"MosaicShiftSquare", Tool::mosaic, {{20, 20}, {120, 70}}, Qt::ShiftModifier,
         Annotation::mosaic({20, 20, 100, 100}, 16)},
        {"MosaicAltSquare", Tool::mosaic, {{20, 20}, {120, 70}}, Qt::AltModifier,
         Annotation::mosaic({20, 20, 100, 100}, 16)},
        {"RectCtrlIsNoConstraint", Tool::rect, {{10, 10}, {60, 30}}, Qt::ControlModifier,
         Annotation::rect({10, 10, 50, 20}, red, 3)},
    };
}

void expectSameMark(const Annotation &actual, const Annotation &expected)
{
    // Exact for everything but the snapped ends, which come from cos and sin.
    const auto *a = actual.as<Annotation::Line>() ? static_cast<const BendableSegment *>(actual.as<Annotation::Line>())
                                                  : actual.as<Annotation::Arrow>();
    const auto *e = expected.as<Annotation::Line>()
                        ? static_cast<const BendableSegment *>(expected.as<Annotation::Line>())
                        : expected.as<Annotation::Arrow>();
    if (a && e) {
        EXPECT_EQ(actual.value().index(), expected.value().index());
        EXPECT_NEAR(a->from.x(), e->from.x(), 1e-9);
        EXPECT_NEAR(a->from.y(), e->from.y(), 1e-9);
        EXPECT_NEAR(a->to.x(), e->to.x(), 1e-9);
        EXPECT_NEAR(a->to.y(), e->to.y(), 1e-9);
        EXPECT_EQ(a->color, e->color);
        EXPECT_EQ(a->width, e->width);
        EXPECT_EQ(a->bend, e->bend);
        return;
    }
    EXPECT_EQ(actual, expected);
}

} // namespace

class EditorDrawing : public EditorFixture, public ::testing::WithParamInterface<DrawCase> {};

TEST_P(EditorDrawing, PressDragReleaseStoresTheMark)
{
    const DrawCase &row = GetParam();
    selectTool(row.tool);
    ASSERT_TRUE(editor->mouseDown(row.path.first()));
    for (qsizetype i = 1; i < row.path.size(); ++i)
        EXPECT_TRUE(editor->mouseDragged(row.path[i], row.modifiers));
    EXPECT_TRUE(editor->mouseUp(row.path.last()));

    ASSERT_EQ(editor->annotations().size(), 1);
    expectSameMark(editor->annotations().first(), row.expected);
    ASSERT_TRUE(surface.shown.has_value());
    EXPECT_EQ(surface.shown->size(), 1);
    EXPECT_FALSE(editor->strokeInProgress());
    // The preview is taken away once the mark is stored.
    ASSERT_TRUE(surface.preview.has_value());
    EXPECT_FALSE(surface.preview->path.has_value());
    ASSERT_TRUE(surface.mosaicPreview.has_value());
    EXPECT_FALSE(surface.mosaicPreview->has_value());
}

INSTANTIATE_TEST_SUITE_P(EveryTool, EditorDrawing, ::testing::ValuesIn(drawCases()),
                         [](const ::testing::TestParamInfo<DrawCase> &info) { return std::string(info.param.name); });

// ---- beginning and dragging ----

TEST_F(EditorFixture, PencilBeginsWithOnePointAndPreviewsInTheCurrentColour)
{
    selectTool(Tool::pencil);
    editor->mouseDown({10, 10});
    EXPECT_TRUE(editor->strokeInProgress());
    expectPoint(*editor->pencilLastPoint(), {10, 10});
    ASSERT_TRUE(surface.preview.has_value());
    EXPECT_EQ(surface.preview->stroke, red);
    EXPECT_EQ(surface.preview->width, 3);
    EXPECT_EQ(surface.preview->fill.alpha(), 0);
}

TEST_F(EditorFixture, HighlightPreviewIsYellowAt18WhateverTheStrokeWidth)
{
    settings.strokeWidth.set(7);
    editor = std::make_unique<AnnotationEditor>(settings);
    editor->setSurface(&surface);
    editor->setCanvas(canvas);
    selectTool(Tool::highlight);
    editor->mouseDown({10, 10});
    EXPECT_EQ(surface.preview->stroke, Annotation::highlightYellow());
    EXPECT_EQ(surface.preview->width, 18);
}

TEST_F(EditorFixture, MosaicPreviewIsAWhiteFrameOverADarkVeilAndShowsTheBlocks)
{
    selectTool(Tool::mosaic);
    editor->mouseDown({20, 20});
    EXPECT_NEAR(surface.preview->stroke.alphaF(), 0.8, 1e-3);
    EXPECT_EQ(surface.preview->stroke.red(), 255);
    EXPECT_EQ(surface.preview->width, 1.5);
    EXPECT_NEAR(surface.preview->fill.alphaF(), 0.15, 1e-3);
    EXPECT_EQ(surface.preview->fill.red(), 0);
    editor->mouseDragged({60, 50}, {});
    ASSERT_TRUE(surface.mosaicPreview.has_value() && surface.mosaicPreview->has_value());
    expectRect(**surface.mosaicPreview, {20, 20, 40, 30});
    EXPECT_EQ(surface.mosaicBlock, 16);
}

TEST_F(EditorFixture, StraightPencilKeepsTheFreehandTraceUnderneath)
{
    selectTool(Tool::pencil);
    editor->mouseDown({10, 10});
    editor->mouseDragged({20, 15}, {});
    editor->mouseDragged({30, 12}, Qt::ShiftModifier);
    EXPECT_EQ(surface.preview->path->elementCount(), 2); // the straight line alone
    // Letting go of Shift without moving: the host calls update at the last point.
    editor->update(*editor->pencilLastPoint(), false);
    EXPECT_EQ(surface.preview->path->elementCount(), 3);
    editor->mouseUp({30, 12});
    EXPECT_EQ(editor->annotations().first(), Annotation::pencil({{10, 10}, {20, 15}, {30, 12}}, red, 3));
}

TEST_F(EditorFixture, PencilLeavesOutOnlyExactDuplicatePoints)
{
    selectTool(Tool::pencil);
    drag({{10, 10}, {10, 10}, {10.25, 10}, {10.25, 10}, {11, 10}});
    EXPECT_EQ(editor->annotations().first().as<Annotation::Pencil>()->points,
              (QList<QPointF>{{10, 10}, {10.25, 10}, {11, 10}}));
}

TEST_F(EditorFixture, ShiftSnapOnALineKeepsTheDistance)
{
    selectTool(Tool::line);
    drag({{100, 100}, {70, 131}}, Qt::ShiftModifier); // 134 degrees: snaps to 135
    const auto *line = editor->annotations().first().as<Annotation::Line>();
    ASSERT_NE(line, nullptr);
    const double r = std::hypot(30.0, 31.0);
    expectPoint(line->to, {100 - r / std::numbers::sqrt2, 100 + r / std::numbers::sqrt2});
}

TEST_F(EditorFixture, PressOutsideTheCanvasStartsNothing)
{
    selectTool(Tool::rect);
    EXPECT_TRUE(editor->mouseDown({450, 10}));
    EXPECT_FALSE(editor->strokeInProgress());
    EXPECT_FALSE(editor->mouseDragged({480, 40}, {}));
    EXPECT_FALSE(editor->mouseUp({480, 40}));
    EXPECT_TRUE(editor->annotations().isEmpty());
}

TEST_F(EditorFixture, ToolNoneTakesThePressAndDrawsNothing)
{
    EXPECT_EQ(editor->currentTool(), Tool::none);
    EXPECT_TRUE(editor->mouseDown({10, 10}));
    EXPECT_FALSE(editor->mouseDragged({60, 60}, {}));
    EXPECT_FALSE(editor->mouseUp({60, 60}));
    EXPECT_TRUE(editor->annotations().isEmpty());
}

// ---- what is kept ----

TEST_F(EditorFixture, MarksTooSmallVanishSilently)
{
    selectTool(Tool::pencil);
    click({10, 10}); // one point
    selectTool(Tool::rect);
    drag({{10, 10}, {13, 40}}); // 3 wide
    drag({{10, 10}, {40, 13.9}}); // under 4 high
    selectTool(Tool::ellipse);
    drag({{10, 10}, {10, 10}});
    selectTool(Tool::mosaic);
    drag({{10, 10}, {12, 50}});
    selectTool(Tool::arrow);
    drag({{10, 10}, {12, 12}});
    EXPECT_TRUE(editor->annotations().isEmpty());
}

TEST_F(EditorFixture, FramesOfExactlyFourByFourAreKept)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {14, 14}});
    EXPECT_EQ(editor->annotations().size(), 1);
}

TEST_F(EditorFixture, LineShorterThanFourIsDroppedAndOfFourIsSelectedWithThreeHandles)
{
    selectTool(Tool::line);
    drag({{100, 100}, {103.9, 100}});
    EXPECT_TRUE(editor->annotations().isEmpty());
    EXPECT_FALSE(editor->hasSelection());

    drag({{100, 100}, {104, 100}});
    ASSERT_EQ(editor->annotations().size(), 1);
    EXPECT_TRUE(editor->hasSelection());
    EXPECT_EQ(editor->currentTool(), Tool::line);
    ASSERT_TRUE(surface.pointHandles.has_value() && surface.pointHandles->has_value());
    EXPECT_EQ(**surface.pointHandles, (QList<QPointF>{{100, 100}, {102, 100}, {104, 100}}));
    ASSERT_TRUE(surface.selection.has_value());
    EXPECT_FALSE(surface.selection->has_value());
}

TEST_F(EditorFixture, AFreshArrowCanBeBentStraightAwayWithItsMiddleHandle)
{
    selectTool(Tool::arrow);
    drag({{100, 100}, {200, 100}});
    drag({{150, 100}, {150, 140}});
    ASSERT_EQ(editor->annotations().size(), 1);
    const auto *arrow = editor->annotations().first().as<Annotation::Arrow>();
    ASSERT_NE(arrow, nullptr);
    ASSERT_TRUE(arrow->bend.has_value());
    expectPoint(*arrow->bend, {150, 140});
}

TEST_F(EditorFixture, TheMiddleHandleWinsWhereItOverlapsAnEnd)
{
    selectTool(Tool::line);
    drag({{100, 100}, {110, 100}}); // middle (105, 100) within 10 of both ends
    drag({{100, 100}, {105, 130}});
    const auto *line = editor->annotations().first().as<Annotation::Line>();
    expectPoint(line->from, {100, 100});
    expectPoint(line->to, {110, 100});
    ASSERT_TRUE(line->bend.has_value());
    expectPoint(*line->bend, {105, 130});
}

TEST_F(EditorFixture, AnEndHandleWithinTenPointsMovesThatEnd)
{
    selectTool(Tool::line);
    drag({{100, 100}, {200, 100}});
    drag({{206, 108}, {220, 150}}); // exactly 10 from the end
    const auto *line = editor->annotations().first().as<Annotation::Line>();
    expectPoint(line->to, {220, 150});
    expectPoint(line->from, {100, 100});
}

TEST_F(EditorFixture, APressJustBeyondTheHandlesStartsANewLine)
{
    selectTool(Tool::line);
    drag({{100, 100}, {200, 100}});
    drag({{206, 108.1}, {260, 150}});
    EXPECT_EQ(editor->annotations().size(), 2);
}

// ---- move tool ----

TEST_F(EditorFixture, MoveToolPicksTheTopmostMarkAndDragsIt)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {110, 110}});
    drag({{10, 10}, {60, 60}});
    selectTool(Tool::move);
    surface.calls.clear();
    EXPECT_TRUE(editor->mouseDown({10, 30})); // on both left edges
    EXPECT_EQ(editor->selectedAnnotationIndex(), 1);
    ASSERT_TRUE(surface.selection.has_value() && surface.selection->has_value());
    expectRect(**surface.selection, QRectF(10, 10, 50, 50).adjusted(-1.5, -1.5, 1.5, 1.5));
    EXPECT_TRUE(editor->mouseDragged({30, 25}, {}));
    EXPECT_TRUE(editor->mouseUp({30, 25}));
    EXPECT_EQ(editor->annotations()[1], Annotation::rect({30, 5, 50, 50}, red, 3));
    EXPECT_EQ(editor->annotations()[0], Annotation::rect({10, 10, 100, 100}, red, 3));
}

TEST_F(EditorFixture, MoveToolPressInTheEmptyMiddleOfARectPassesThrough)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {110, 110}});
    selectTool(Tool::move);
    EXPECT_FALSE(editor->mouseDown({60, 60}));
    EXPECT_FALSE(editor->hasSelection());
}

TEST_F(EditorFixture, MoveToolPressOnNothingInsideClearsTheSelectionAndDeclines)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {110, 110}});
    selectTool(Tool::move);
    editor->mouseDown({10, 50});
    editor->mouseUp({10, 50});
    ASSERT_TRUE(editor->hasSelection());
    EXPECT_FALSE(editor->mouseDown({300, 250}));
    EXPECT_FALSE(editor->hasSelection());
    EXPECT_FALSE(editor->mouseUp({300, 250}));
}

TEST_F(EditorFixture, MoveToolPressOnNothingOutsideTheCanvasIsTaken)
{
    selectTool(Tool::move);
    EXPECT_TRUE(editor->mouseDown({500, 500}));
}

TEST_F(EditorFixture, BoxHandleResizesFromTheStartAnnotation)
{
    selectTool(Tool::ellipse);
    settings.strokeWidth.set(2); // the editor read 3 at creation; this changes nothing for it
    drag({{100, 100}, {140, 140}});
    selectTool(Tool::move);
    editor->mouseDown({100, 120});
    editor->mouseUp({100, 120});
    // Bounds are the frame grown by 1.5: (98.5, 98.5, 43, 43). topRight sits at (141.5, 141.5).
    EXPECT_TRUE(editor->mouseDown({147, 135}));
    EXPECT_TRUE(editor->mouseDragged({150, 150}, {}));
    EXPECT_TRUE(editor->mouseDragged({157, 165}, {}));
    EXPECT_TRUE(editor->mouseUp({157, 165}));
    const auto *ellipse = editor->annotations().first().as<Annotation::Ellipse>();
    ASSERT_NE(ellipse, nullptr);
    expectRect(ellipse->frame, {98.5, 98.5, 43 + 10, 43 + 30});
}

TEST_F(EditorFixture, BoxHandleDraggedPastTheOppositeEdgeKeepsAMinimumAndDoesNotMirror)
{
    selectTool(Tool::rect);
    drag({{100, 100}, {140, 140}});
    selectTool(Tool::move);
    click({100, 120});
    // left handle at (98.5, 120); drag it 100 to the right, past the right edge
    editor->mouseDown({98.5, 120});
    editor->mouseDragged({198.5, 120}, {});
    editor->mouseUp({198.5, 120});
    const auto *rect = editor->annotations().first().as<Annotation::Rect>();
    expectRect(rect->frame, {198.5, 98.5, 100 - 43, 43});

    // Its bounds are now (197, 97, 60, 46): the left handle sits at (197, 120).
    editor->mouseDown({197, 120});
    editor->mouseDragged({197 + 55, 120}, {}); // 5 short of the right edge: raised to 8
    editor->mouseUp({197 + 55, 120});
    expectRect(editor->annotations().first().as<Annotation::Rect>()->frame, {252, 97, 8, 46});
}

TEST_F(EditorFixture, LineHandlesWorkWithTheMoveToolToo)
{
    selectTool(Tool::line);
    drag({{100, 100}, {200, 100}});
    selectTool(Tool::move);
    EXPECT_TRUE(editor->hasSelection()); // the move tool keeps what is selected
    editor->clearSelection();
    click({150, 101});
    ASSERT_TRUE(editor->hasSelection());
    drag({{100, 100}, {90, 80}});
    expectPoint(editor->annotations().first().as<Annotation::Line>()->from, {90, 80});
}

// ---- selection display ----

TEST_F(EditorFixture, ClearSelectionHidesOutlineAndHandlesAndAsksForCursors)
{
    selectTool(Tool::line);
    drag({{100, 100}, {200, 100}});
    const int before = surface.cursorInvalidations;
    editor->clearSelection();
    EXPECT_FALSE(editor->hasSelection());
    EXPECT_FALSE(surface.selection->has_value());
    EXPECT_FALSE(surface.pointHandles->has_value());
    EXPECT_GT(surface.cursorInvalidations, before);
}

TEST_F(EditorFixture, ChoosingAnotherToolThanMoveClearsTheSelection)
{
    selectTool(Tool::line);
    drag({{100, 100}, {200, 100}});
    selectTool(Tool::move);
    EXPECT_TRUE(editor->hasSelection());
    selectTool(Tool::rect);
    EXPECT_FALSE(editor->hasSelection());
}

// ---- bubbles ----

TEST_F(EditorFixture, BubblesAreNumberedInOrderWithTheCurrentColourAndRadius)
{
    selectTool(Tool::sequence);
    click({50, 50});
    click({80, 50});
    ASSERT_EQ(editor->annotations().size(), 2);
    EXPECT_EQ(editor->annotations()[0], Annotation::sequence(1, {50, 50}, red, 14));
    EXPECT_EQ(editor->annotations()[1], Annotation::sequence(2, {80, 50}, red, 14));
}

TEST_F(EditorFixture, BubbleNumbersAfterUndoSkip)
{
    selectTool(Tool::sequence);
    click({50, 50});
    click({80, 50});
    editor->handleToolbarAction(EditorAction::undo());
    click({110, 50});
    ASSERT_EQ(editor->annotations().size(), 2);
    EXPECT_EQ(editor->annotations()[1].as<Annotation::Sequence>()->number, 3);
}

TEST_F(EditorFixture, BubbleNumbersAfterDeleteSkipToo)
{
    selectTool(Tool::sequence);
    click({50, 50});
    selectTool(Tool::move);
    click({50, 50});
    editor->keyDown(Hotkey{51, 0});
    ASSERT_TRUE(editor->annotations().isEmpty());
    selectTool(Tool::sequence);
    click({50, 50});
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Sequence>()->number, 2);
}

TEST_F(EditorFixture, EachEditorCountsFromOne)
{
    selectTool(Tool::sequence);
    click({50, 50});
    AnnotationEditor another(settings);
    another.setCanvas(canvas);
    another.handleToolbarAction(EditorAction::selectTool(Tool::sequence));
    another.mouseDown({50, 50});
    EXPECT_EQ(another.annotations()[0].as<Annotation::Sequence>()->number, 1);
}

// ---- undo, redo, delete ----

TEST_F(EditorFixture, UndoAndRedoWorkOnTheEndOfTheList)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {50, 50}});
    drag({{60, 60}, {90, 90}});
    editor->handleToolbarAction(EditorAction::undo());
    ASSERT_EQ(editor->annotations().size(), 1);
    EXPECT_EQ(editor->annotations()[0], Annotation::rect({10, 10, 40, 40}, red, 3));
    EXPECT_EQ(surface.shown->size(), 1);
    editor->handleToolbarAction(EditorAction::undo());
    editor->handleToolbarAction(EditorAction::undo()); // nothing left: no harm
    EXPECT_TRUE(editor->annotations().isEmpty());
    EXPECT_EQ(editor->redoStack().size(), 2);
    editor->handleToolbarAction(EditorAction::redo());
    editor->handleToolbarAction(EditorAction::redo());
    editor->handleToolbarAction(EditorAction::redo()); // nothing left
    ASSERT_EQ(editor->annotations().size(), 2);
    EXPECT_EQ(editor->annotations()[1], Annotation::rect({60, 60, 30, 30}, red, 3));
    EXPECT_EQ(surface.shown->size(), 2);
}

TEST_F(EditorFixture, UndoOfTheSelectedLastMarkClearsTheSelection)
{
    selectTool(Tool::line);
    drag({{100, 100}, {200, 100}});
    ASSERT_TRUE(editor->hasSelection());
    editor->handleToolbarAction(EditorAction::undo());
    EXPECT_FALSE(editor->hasSelection());
    EXPECT_FALSE(surface.pointHandles->has_value());
}

TEST_F(EditorFixture, UndoWhileAnEarlierMarkIsSelectedKeepsIt)
{
    selectTool(Tool::line);
    drag({{100, 100}, {200, 100}});
    selectTool(Tool::rect);
    drag({{10, 10}, {50, 50}});
    selectTool(Tool::move);
    click({150, 103});
    ASSERT_EQ(editor->selectedAnnotationIndex(), 0);
    editor->handleToolbarAction(EditorAction::undo());
    EXPECT_EQ(editor->selectedAnnotationIndex(), 0);
    EXPECT_EQ(editor->annotations().size(), 1);
}

TEST_F(EditorFixture, DeletedMarkComesBackOnTopWithRedoAndANewMarkEndsRedo)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {50, 50}});
    drag({{100, 100}, {150, 150}});
    selectTool(Tool::move);
    click({10, 30});
    ASSERT_EQ(editor->selectedAnnotationIndex(), 0);
    EXPECT_TRUE(editor->keyDown(Hotkey{117, 0}));
    ASSERT_EQ(editor->annotations().size(), 1);
    EXPECT_FALSE(editor->hasSelection());
    editor->handleToolbarAction(EditorAction::redo());
    ASSERT_EQ(editor->annotations().size(), 2);
    EXPECT_EQ(editor->annotations()[1], Annotation::rect({10, 10, 40, 40}, red, 3));

    editor->handleToolbarAction(EditorAction::undo());
    selectTool(Tool::ellipse);
    drag({{200, 200}, {250, 250}});
    EXPECT_TRUE(editor->redoStack().isEmpty());
    editor->handleToolbarAction(EditorAction::redo());
    ASSERT_EQ(editor->annotations().size(), 2);
    EXPECT_TRUE(editor->annotations()[1].is<Annotation::Ellipse>());
}

TEST_F(EditorFixture, UndoAfterAMoveRemovesTheNewestMarkNotTheMove)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {50, 50}});
    drag({{100, 100}, {150, 150}});
    selectTool(Tool::move);
    drag({{10, 30}, {20, 40}});
    EXPECT_EQ(editor->annotations()[0], Annotation::rect({20, 20, 40, 40}, red, 3));
    editor->handleToolbarAction(EditorAction::undo());
    ASSERT_EQ(editor->annotations().size(), 1);
    EXPECT_EQ(editor->annotations()[0], Annotation::rect({20, 20, 40, 40}, red, 3));
}

TEST_F(EditorFixture, ChangesInPlaceLeaveTheRedoStack)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {50, 50}});
    drag({{100, 100}, {150, 150}});
    editor->handleToolbarAction(EditorAction::undo());
    selectTool(Tool::move);
    drag({{10, 30}, {20, 40}});
    editor->handleToolbarAction(EditorAction::selectColor(blue));
    EXPECT_EQ(editor->redoStack().size(), 1);
}

TEST_F(EditorFixture, DeleteKeysWithoutASelectionDoNothing)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {50, 50}});
    EXPECT_FALSE(editor->keyDown(Hotkey{51, 0}));
    EXPECT_EQ(editor->annotations().size(), 1);
}

// ---- toolbar actions ----

TEST_F(EditorFixture, SelectToolFiresToolChangeOnlyWhenItChanged)
{
    selectTool(Tool::rect);
    selectTool(Tool::rect);
    editor->setCurrentTool(Tool::rect);
    selectTool(Tool::arrow);
    EXPECT_EQ(toolChanges, (QList<Tool>{Tool::rect, Tool::arrow}));
}

TEST_F(EditorFixture, ColourChipFollowsTheHighlighterAndBack)
{
    selectTool(Tool::pencil);
    EXPECT_TRUE(toolbar.colors.isEmpty());
    selectTool(Tool::highlight);
    ASSERT_EQ(toolbar.colors.size(), 1);
    EXPECT_EQ(toolbar.colors.last(), Annotation::highlightYellow());
    selectTool(Tool::rect);
    ASSERT_EQ(toolbar.colors.size(), 2);
    EXPECT_EQ(toolbar.colors.last(), red);
}

TEST_F(EditorFixture, ColourWithTheHighlighterSetsOnlyTheNextHighlight)
{
    selectTool(Tool::highlight);
    drag({{10, 10}, {50, 50}});
    selectTool(Tool::move);
    click({30, 30});
    ASSERT_TRUE(editor->hasSelection());
    editor->setCurrentTool(Tool::highlight); // the highlighter active with a highlight selected
    editor->handleToolbarAction(EditorAction::selectColor(blue));
    QColor halfBlue = blue;
    halfBlue.setAlphaF(0.5);
    EXPECT_EQ(editor->highlightColor(), halfBlue);
    EXPECT_EQ(editor->currentColor(), red);
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Highlight>()->color, Annotation::highlightYellow());
    drag({{100, 100}, {150, 150}});
    EXPECT_EQ(editor->annotations()[1].as<Annotation::Highlight>()->color, halfBlue);
}

TEST_F(EditorFixture, ColourRecolorsTheSelection)
{
    selectTool(Tool::arrow);
    drag({{100, 100}, {200, 100}});
    editor->handleToolbarAction(EditorAction::selectColor(blue));
    EXPECT_EQ(editor->currentColor(), blue);
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Arrow>()->color, blue);
    EXPECT_EQ(surface.shown->first().as<Annotation::Arrow>()->color, blue);
}

TEST_F(EditorFixture, ColourWithTheCounterRecolorsTheLastBubble)
{
    selectTool(Tool::sequence);
    click({50, 50});
    click({90, 50});
    editor->handleToolbarAction(EditorAction::selectColor(blue));
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Sequence>()->color, red);
    EXPECT_EQ(editor->annotations()[1].as<Annotation::Sequence>()->color, blue);
    click({130, 50});
    EXPECT_EQ(editor->annotations()[2].as<Annotation::Sequence>()->color, blue);
}

TEST_F(EditorFixture, SetSizeIsLeftToTheHost)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {50, 50}});
    surface.calls.clear();
    editor->handleToolbarAction(EditorAction::setSize(QSize(100, 100)));
    EXPECT_TRUE(surface.calls.isEmpty());
    EXPECT_TRUE(outputs.isEmpty());
}

TEST_F(EditorFixture, OutputActionsReachOnOutput)
{
    for (const EditorAction &action : {EditorAction::copy(), EditorAction::save(), EditorAction::upload(),
                                       EditorAction::copyText(), EditorAction::close()})
        editor->handleToolbarAction(action);
    EXPECT_EQ(outputs, (QList<EditorAction::Kind>{EditorAction::Kind::copy, EditorAction::Kind::save,
                                                   EditorAction::Kind::upload, EditorAction::Kind::copyText,
                                                   EditorAction::Kind::close}));
}

TEST_F(EditorFixture, DefaultColourComesFromTheSettingsAndFallsBackToRed)
{
    settings.defaultColorHex.set(QStringLiteral("#00FF00"));
    AnnotationEditor green(settings);
    EXPECT_EQ(green.currentColor(), QColor(0, 255, 0));
    settings.defaultColorHex.set(QStringLiteral("not a colour"));
    AnnotationEditor fallback(settings);
    EXPECT_EQ(fallback.currentColor(), red);
}

// ---- text options ----

TEST_F(EditorFixture, TextToolShowsTheTextOptionsAndOtherToolsHideThem)
{
    selectTool(Tool::text);
    ASSERT_FALSE(toolbar.textOptions.isEmpty());
    EXPECT_EQ(toolbar.textOptions.last(), TextOptions{});
    selectTool(Tool::rect);
    EXPECT_EQ(toolbar.textOptions.last(), std::nullopt);
}

TEST_F(EditorFixture, TextOptionsWithNothingSelectedSetTheNextTextAndCarryOverToTheNextEditor)
{
    const TextOptions big{32, TextStyle::background, TextFont::mono()};
    editor->handleToolbarAction(EditorAction::setTextOptions(big));
    EXPECT_EQ(editor->textOptions(), big);
    EXPECT_EQ(toolbar.textOptions.last(), big);
    AnnotationEditor next(settings);
    EXPECT_EQ(next.textOptions(), big);
}

TEST_F(EditorFixture, TextOptionsRestyleASelectedTextOnly)
{
    FakeTextField *field = openTextField({50, 50});
    ASSERT_NE(field, nullptr);
    field->typed = QStringLiteral("Hi");
    selectTool(Tool::move);
    ASSERT_EQ(editor->annotations().size(), 1);
    const QRectF box = editor->annotations()[0].boundingRect();
    click(box.center());
    ASSERT_TRUE(editor->hasSelection());
    EXPECT_EQ(toolbar.textOptions.last(), TextOptions{});

    const TextOptions outlined{40, TextStyle::outline, TextFont::serif()};
    editor->handleToolbarAction(EditorAction::setTextOptions(outlined));
    EXPECT_EQ(editor->annotations()[0].as<Annotation::Text>()->options, outlined);
    EXPECT_EQ(editor->textOptions(), TextOptions{});
    EXPECT_EQ(AnnotationEditor::lastTextOptions(), TextOptions{});
    EXPECT_EQ(toolbar.textOptions.last(), outlined);
    // The outline follows the restyled box.
    expectRect(**surface.selection, editor->annotations()[0].boundingRect());
}

// ---- cursors ----

TEST_F(EditorFixture, CanvasCursorFollowsTheTool)
{
    EXPECT_EQ(editor->cursorRects(), (QList<CursorRect>{{canvas, Qt::ArrowCursor}}));
    selectTool(Tool::move);
    EXPECT_EQ(editor->cursorRects().first().cursor, Qt::ArrowCursor);
    selectTool(Tool::text);
    EXPECT_EQ(editor->cursorRects().first().cursor, Qt::IBeamCursor);
    selectTool(Tool::mosaic);
    EXPECT_EQ(editor->cursorRects().first().cursor, Qt::CrossCursor);
}

TEST_F(EditorFixture, MoveToolAddsAnOpenHandOverEveryMarkAndGripsOfTheSelection)
{
    selectTool(Tool::rect);
    drag({{10, 10}, {50, 50}});
    selectTool(Tool::line);
    drag({{100, 100}, {200, 100}});
    selectTool(Tool::move);
    click({10, 30});
    const QList<CursorRect> rects = editor->cursorRects();
    ASSERT_EQ(rects.size(), 1 + 2 + 8);
    EXPECT_EQ(rects[1], (CursorRect{editor->annotations()[0].boundingRect().adjusted(-6, -6, 6, 6), Qt::OpenHandCursor}));
    EXPECT_EQ(rects[2], (CursorRect{editor->annotations()[1].boundingRect().adjusted(-6, -6, 6, 6), Qt::OpenHandCursor}));
    const QRectF bounds = editor->annotations()[0].boundingRect();
    EXPECT_EQ(rects[3], (CursorRect{QRectF(bounds.left() - 8, bounds.bottom() - 8, 16, 16), Qt::SizeFDiagCursor}));
    EXPECT_EQ(rects[4].cursor, Qt::SizeVerCursor);
    EXPECT_EQ(rects[5].cursor, Qt::SizeBDiagCursor);
    EXPECT_EQ(rects[10], (CursorRect{QRectF(bounds.left() - 8, bounds.center().y() - 8, 16, 16), Qt::SizeHorCursor}));
}

TEST_F(EditorFixture, SelectedLineShowsArrowCursorsOnItsThreeHandles)
{
    selectTool(Tool::line);
    drag({{100, 100}, {200, 100}});
    const QList<CursorRect> rects = editor->cursorRects();
    ASSERT_EQ(rects.size(), 4);
    EXPECT_EQ(rects[0], (CursorRect{canvas, Qt::CrossCursor}));
    EXPECT_EQ(rects[2], (CursorRect{QRectF(140, 90, 20, 20), Qt::ArrowCursor}));
}

// ---- image space ----

TEST_F(EditorFixture, AnnotationsInImageSpaceTurnYDownFromTheRectanglesTop)
{
    selectTool(Tool::rect);
    drag({{110, 120}, {150, 140}});
    selectTool(Tool::arrow);
    drag({{110, 200}, {190, 220}});
    drag({{150, 210}, {150, 230}}); // bend it
    selectTool(Tool::sequence);
    click({120, 180});
    const QRectF selection(100, 100, 200, 150); // maxY 250
    const QList<Annotation> image = editor->annotationsInImageSpace(selection);
    ASSERT_EQ(image.size(), 3);
    EXPECT_EQ(image[0], Annotation::rect({10, 250 - 140, 40, 20}, red, 3));
    EXPECT_EQ(image[1], Annotation::arrow({10, 50}, {90, 30}, red, 3, QPointF(50, 20)));
    EXPECT_EQ(image[2], Annotation::sequence(1, {20, 70}, red, 14));
    // The editor's own list stays in its space.
    EXPECT_EQ(editor->annotations()[0], Annotation::rect({110, 120, 40, 20}, red, 3));
}

TEST_F(EditorFixture, TextOriginStaysTheTopLeftCornerInImageSpace)
{
    FakeTextField *field = openTextField({150, 150});
    field->typed = QStringLiteral("Note");
    editor->commitPendingText();
    const auto *text = editor->annotations()[0].as<Annotation::Text>();
    const QRectF selection(100, 100, 200, 150);
    const auto *inImage = editor->annotationsInImageSpace(selection)[0].as<Annotation::Text>();
    expectPoint(inImage->origin, {text->origin.x() - 100, 250 - text->origin.y()});
    EXPECT_EQ(inImage->string, QStringLiteral("Note"));
}
