#include "overlay/SelectionCanvas.h"

#include "FakeSurface.h"
#include "SettingsFakes.h"
#include "settings/AppSettings.h"

#include <gtest/gtest.h>

#include <variant>

using glimpso::Handle;
using glimpso::Tool;

namespace {

ScreenSnapshot display(std::uint32_t id, QRectF frame, double scale)
{
    QImage image((frame.size() * scale).toSize(), QImage::Format_RGB32);
    image.fill(Qt::gray);
    return {id, image, frame, scale};
}

// Two displays in y-up points: a 400×300 one at scale 1 on the left and a
// 300×200 one at scale 2 to its right, lower edges level.
const QRectF leftFrame(0, 0, 400, 300);
const QRectF rightFrame(400, 0, 300, 200);

struct Harness {
    explicit Harness(CaptureIntent intent = CaptureIntent::image, EditMode mode = EditMode::onScreen,
                     QList<ScreenSnapshot> snapshots = {display(1, leftFrame, 1), display(2, rightFrame, 2)})
        : settings(storage, login),
          canvas(std::move(snapshots), intent, settings, [this](const RegionResult &result) { results << result; })
    {
        settings.editMode.set(mode);
        for (const ScreenSnapshot &snapshot : canvas.snapshots())
            surfaces << new FakeSurface(snapshot.frame);
        for (FakeSurface *surface : std::as_const(surfaces))
            canvas.addSurface(surface);
        canvas.setToolbarFactory([this](std::function<void(const EditorAction &)> handler) {
            ++toolbarsMade;
            toolbarHandler = std::move(handler);
            auto made = std::make_unique<FakeToolbar>(toolbarWidth);
            toolbar = made.get();
            return made;
        });
    }
    ~Harness() { qDeleteAll(surfaces); }

    void drag(QPointF from, QPointF to)
    {
        canvas.mouseDown(from);
        canvas.mouseDragged((from + to) / 2, Qt::NoModifier);
        canvas.mouseDragged(to, Qt::NoModifier);
        canvas.mouseUp(to);
    }
    void arm(const QRectF &rect) { drag(rect.topLeft(), rect.bottomRight()); }

    qreal toolbarWidth = 500;
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings;
    SelectionCanvas canvas;
    QList<FakeSurface *> surfaces;
    QList<RegionResult> results;
    int toolbarsMade = 0;
    FakeToolbar *toolbar = nullptr;
    std::function<void(const EditorAction &)> toolbarHandler;
};

bool isCancelled(const RegionResult &result) { return std::holds_alternative<RegionResult::Cancelled>(result.value); }

Hotkey key(uint16_t code, uint64_t flags = 0) { return Hotkey{code, flags}; }

} // namespace

TEST(SelectionCanvas, BoundsAreTheUnionOfTheDisplays)
{
    Harness h;
    EXPECT_EQ(h.canvas.bounds(), QRectF(0, 0, 700, 300));
}

TEST(SelectionCanvas, APlainClickCancels)
{
    Harness h;
    h.canvas.mouseDown({50, 50});
    h.canvas.mouseUp({50, 50});
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_TRUE(isCancelled(h.results.first()));
}

TEST(SelectionCanvas, AReleaseWithoutAPressCancels)
{
    Harness h;
    h.canvas.mouseUp({50, 50});
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_TRUE(isCancelled(h.results.first()));
}

TEST(SelectionCanvas, ADragThreePointsWideCancels)
{
    Harness h;
    h.drag({50, 50}, {53, 150});
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_TRUE(isCancelled(h.results.first()));
}

TEST(SelectionCanvas, FourByFourArms)
{
    Harness h;
    h.drag({50, 50}, {54, 54});
    EXPECT_TRUE(h.results.isEmpty());
    ASSERT_TRUE(h.canvas.isArmed());
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(50, 50, 4, 4));
    EXPECT_EQ(h.canvas.editor().canvas(), QRectF(50, 50, 4, 4));
}

TEST(SelectionCanvas, FourByThreePointNineCancels)
{
    Harness h;
    h.drag({50, 50}, {54, 53.9});
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_TRUE(isCancelled(h.results.first()));
    EXPECT_FALSE(h.canvas.isArmed());
}

TEST(SelectionCanvas, TheFirstDragRunsInAnyDirection)
{
    Harness h;
    h.canvas.mouseDown({200, 200});
    h.canvas.mouseDragged({100, 250}, Qt::NoModifier);
    EXPECT_EQ(h.canvas.liveRect(), QRectF(100, 200, 100, 50));
}

TEST(SelectionCanvas, TheFirstDragShowsOnEveryDisplayWithoutArming)
{
    Harness h;
    h.canvas.mouseDown({350, 50});
    h.canvas.mouseDragged({450, 150}, Qt::NoModifier);
    for (FakeSurface *surface : std::as_const(h.surfaces)) {
        EXPECT_EQ(surface->liveDrags.last(), QRectF(350, 50, 100, 100));
        // The live drag never goes through the armed rendering: no handles, hint kept.
        EXPECT_TRUE(surface->selections.isEmpty());
    }
}

TEST(SelectionCanvas, ArmingShowsTheSelectionAndTheRectangleTool)
{
    Harness h;
    h.arm(QRectF(100, 100, 150, 80));
    for (FakeSurface *surface : std::as_const(h.surfaces)) {
        EXPECT_EQ(surface->selections.last(), QRectF(100, 100, 150, 80));
        EXPECT_TRUE(surface->lastArmed);
    }
    EXPECT_EQ(h.toolbarsMade, 1);
    ASSERT_TRUE(h.toolbar);
    EXPECT_EQ(h.toolbar->selectedTool, Tool::rect);
    EXPECT_EQ(h.canvas.editor().currentTool(), Tool::rect);
}

TEST(SelectionCanvas, ATextCaptureEndsAtTheReleaseWithAnArea)
{
    Harness h(CaptureIntent::text);
    h.drag({10, 10}, {110, 60});
    ASSERT_EQ(h.results.size(), 1);
    const auto *area = std::get_if<RegionResult::Area>(&h.results.first().value);
    ASSERT_TRUE(area);
    EXPECT_EQ(area->rect, QRectF(10, 10, 100, 50));
    EXPECT_EQ(area->snapshots.size(), 2);
    EXPECT_EQ(h.toolbarsMade, 0);
    EXPECT_FALSE(h.canvas.isArmed());
}

TEST(SelectionCanvas, EditingAfterTheCaptureEndsAtTheReleaseWithAnArea)
{
    Harness h(CaptureIntent::image, EditMode::afterCapture);
    h.drag({10, 10}, {110, 60});
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_TRUE(std::holds_alternative<RegionResult::Area>(h.results.first().value));
    EXPECT_EQ(h.toolbarsMade, 0);
}

TEST(SelectionCanvas, DraggingTopLeftAcrossTheOppositeCornerMirrors)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50)); // top left anchor at (100, 150)
    h.canvas.mouseDown({100, 150});
    h.canvas.mouseDragged({260, 80}, Qt::NoModifier);
    // minX went to 260 past maxX 200, maxY went to 80 below minY 100.
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(200, 80, 60, 20));
    // The handle stays the same one: dragging further keeps moving that edge pair.
    h.canvas.mouseDragged({280, 60}, Qt::NoModifier);
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(200, 60, 80, 40));
    h.canvas.mouseUp({280, 60});
    EXPECT_TRUE(h.results.isEmpty());
}

TEST(SelectionCanvas, EachHandleMovesItsOwnEdges)
{
    const QRectF start(100, 100, 100, 50);
    const struct {
        Handle handle;
        QRectF expected;
    } cases[] = {
        {Handle::top, QRectF(100, 100, 100, 60)},         {Handle::right, QRectF(100, 100, 110, 50)},
        {Handle::bottom, QRectF(100, 110, 100, 40)},      {Handle::left, QRectF(110, 100, 90, 50)},
        {Handle::topRight, QRectF(100, 100, 110, 60)},    {Handle::bottomRight, QRectF(100, 110, 110, 40)},
        {Handle::bottomLeft, QRectF(110, 110, 90, 40)},
    };
    for (const auto &c : cases) {
        Harness h;
        h.arm(start);
        const QPointF grip = glimpso::anchor(c.handle, start);
        h.canvas.mouseDown(grip);
        h.canvas.mouseDragged(grip + QPointF(10, 10), Qt::NoModifier);
        EXPECT_EQ(*h.canvas.armedRect(), c.expected) << int(c.handle);
    }
}

TEST(SelectionCanvas, APressWithinThirteenPointsOfAHandleResizes)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50));
    // 12.5 points right of and above the bottom right handle at (200, 100).
    h.canvas.mouseDown({212.5, 112.5});
    h.canvas.mouseDragged({232.5, 112.5}, Qt::NoModifier);
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(100, 100, 120, 50));
}

TEST(SelectionCanvas, AHandleWinsOverAnAnnotationLyingUnderIt)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50));
    ASSERT_EQ(h.canvas.editor().currentTool(), Tool::rect);
    // A rectangle whose corner lies in the bottom right handle's box at (200, 100).
    h.drag({120, 120}, {196, 104});
    ASSERT_EQ(h.canvas.editor().annotations().size(), 1);
    const glimpso::Annotation drawn = h.canvas.editor().annotations().first();
    h.canvas.editor().setCurrentTool(Tool::move);
    // On the annotation's corner and within 13 points of the handle.
    h.canvas.mouseDown({196, 104});
    h.canvas.mouseDragged({216, 104}, Qt::NoModifier);
    h.canvas.mouseUp({216, 104});
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(100, 100, 120, 50));
    ASSERT_EQ(h.canvas.editor().annotations().size(), 1);
    EXPECT_EQ(h.canvas.editor().annotations().first(), drawn);
    EXPECT_FALSE(h.canvas.editor().hasSelection());
}

TEST(SelectionCanvas, EscapeClosesTheTextBoxFirstThenCancels)
{
    Harness h;
    h.arm(QRectF(100, 100, 200, 100));
    h.canvas.editor().setCurrentTool(Tool::text);
    h.canvas.mouseDown({150, 150});
    h.canvas.mouseUp({150, 150});
    ASSERT_TRUE(h.canvas.editor().hasTextField());
    h.surfaces.first()->textFields.field->typed = QStringLiteral("dropped");

    EXPECT_TRUE(h.canvas.keyDown(key(53)));
    EXPECT_FALSE(h.canvas.editor().hasTextField());
    EXPECT_TRUE(h.results.isEmpty());
    EXPECT_TRUE(h.canvas.editor().annotations().isEmpty());

    EXPECT_TRUE(h.canvas.keyDown(key(53)));
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_TRUE(isCancelled(h.results.first()));
}

TEST(SelectionCanvas, APressJustOutsideTheHandleBoxDoesNothing)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50));
    h.canvas.mouseDown({213.5, 100});
    h.canvas.mouseDragged({250, 100}, Qt::NoModifier);
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(100, 100, 100, 50));
}

TEST(SelectionCanvas, WithoutTheMoveToolAPressInsideNeverMovesTheSelection)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50));
    h.canvas.editor().setCurrentTool(Tool::none);
    h.canvas.mouseDown({150, 125});
    h.canvas.mouseDragged({170, 135}, Qt::NoModifier);
    h.canvas.mouseUp({170, 135});
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(100, 100, 100, 50));
}

TEST(SelectionCanvas, TheMoveToolMovesTheSelectionAndStopsFlushAtTheBounds)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50));
    h.canvas.editor().setCurrentTool(Tool::move);
    h.canvas.mouseDown({150, 125});
    h.canvas.mouseDragged({170, 135}, Qt::NoModifier);
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(120, 110, 100, 50));
    // Far past the right and the top of the bounds: flush, same size.
    h.canvas.mouseDragged({5000, 5000}, Qt::NoModifier);
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(600, 250, 100, 50));
    // And past the left and the bottom.
    h.canvas.mouseDragged({-5000, -5000}, Qt::NoModifier);
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(0, 0, 100, 50));
    h.canvas.mouseUp({-5000, -5000});
    EXPECT_TRUE(h.results.isEmpty());
}

TEST(SelectionCanvas, ASelectionAsLargeAsTheBoundsKeepsToTheirMinimum)
{
    Harness h;
    h.arm(QRectF(0, 0, 700, 300));
    h.canvas.editor().setCurrentTool(Tool::move);
    h.canvas.mouseDown({350, 150});
    h.canvas.mouseDragged({300, 100}, Qt::NoModifier);
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(0, 0, 700, 300));
}

TEST(SelectionCanvas, AResizeStaysWithinTheBoundsButKeepsFourPoints)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50));
    // The bottom left handle dragged far outside the bounds.
    h.canvas.mouseDown({100, 100});
    h.canvas.mouseDragged({-300, -300}, Qt::NoModifier);
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(0, 0, 200, 150));
    // The right edge dragged onto the left one: at least four points wide.
    h.canvas.mouseUp({-300, -300});
    h.canvas.mouseDown({200, 75});
    h.canvas.mouseDragged({0, 75}, Qt::NoModifier);
    EXPECT_EQ(h.canvas.armedRect()->width(), 4);
    EXPECT_EQ(h.canvas.armedRect()->x(), 0);
}

TEST(SelectionCanvas, EscapeCancelsAlsoInTheMiddleOfTheFirstDrag)
{
    Harness h;
    h.canvas.mouseDown({10, 10});
    h.canvas.mouseDragged({100, 100}, Qt::NoModifier);
    EXPECT_TRUE(h.canvas.keyDown(key(53)));
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_TRUE(isCancelled(h.results.first()));
}

TEST(SelectionCanvas, OtherKeysAreNotTakenBeforeArming)
{
    Harness h;
    EXPECT_FALSE(h.canvas.keyDown(key(0)));
    EXPECT_FALSE(h.canvas.keyDown(key(36)));
    EXPECT_TRUE(h.results.isEmpty());
}

TEST(SelectionCanvas, ReturnOverAnArmedSelectionCopiesIt)
{
    Harness h;
    h.arm(QRectF(350, 50, 100, 60));
    EXPECT_TRUE(h.canvas.keyDown(key(36)));
    ASSERT_EQ(h.results.size(), 1);
    const auto *selected = std::get_if<RegionResult::Selected>(&h.results.first().value);
    ASSERT_TRUE(selected);
    EXPECT_EQ(selected->rect, QRectF(350, 50, 100, 60));
    EXPECT_EQ(selected->action.kind(), EditorAction::Kind::copy);
    EXPECT_EQ(selected->snapshots.size(), 2);
}

TEST(SelectionCanvas, ToolbarOutputsBecomeResultsAndCloseCancels)
{
    Harness h;
    h.arm(QRectF(50, 50, 100, 60));
    ASSERT_TRUE(h.toolbarHandler);
    h.toolbarHandler(EditorAction::save());
    h.toolbarHandler(EditorAction::close());
    ASSERT_EQ(h.results.size(), 2);
    const auto *selected = std::get_if<RegionResult::Selected>(&h.results.at(0).value);
    ASSERT_TRUE(selected);
    EXPECT_EQ(selected->action.kind(), EditorAction::Kind::save);
    EXPECT_TRUE(isCancelled(h.results.at(1)));
}

TEST(SelectionCanvas, ALateToolbarClickAfterTheCanvasIsGoneIsIgnored)
{
    std::function<void(const EditorAction &)> handler;
    {
        Harness h;
        h.arm(QRectF(50, 50, 100, 60));
        handler = h.toolbarHandler;
    }
    handler(EditorAction::copy()); // must not crash
    SUCCEED();
}

TEST(SelectionCanvas, TheSizeChipKeepsTheTopLeftCornerAndCountsPixels)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50)); // top left (100, 150), on the scale 1 display
    h.toolbarHandler(EditorAction::setSize(QSize(40, 30)));
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(100, 120, 40, 30));
}

TEST(SelectionCanvas, TheSizeChipTakesPhysicalPixelsOnADenseDisplay)
{
    Harness h;
    h.arm(QRectF(450, 50, 100, 50)); // on the scale 2 display
    h.toolbarHandler(EditorAction::setSize(QSize(100, 60)));
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(450, 70, 50, 30));
}

TEST(SelectionCanvas, ASizeLargerThanTheRoomStopsAtTheBounds)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50));
    h.toolbarHandler(EditorAction::setSize(QSize(5000, 5000)));
    // Right to the bounds' right edge, down to their lower edge; the top left stays.
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(100, 0, 600, 150));
}

TEST(SelectionCanvas, ATinySizeIsRaisedToFourPoints)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50));
    h.toolbarHandler(EditorAction::setSize(QSize(1, 1)));
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(100, 146, 4, 4));
}

TEST(SelectionCanvas, CursorRectanglesAreAbsentUntilArmedThenTheHandlesInOrder)
{
    Harness h;
    EXPECT_FALSE(h.canvas.cursorRects().has_value());
    const QRectF rect(100, 100, 100, 50);
    h.arm(rect);
    const auto rects = h.canvas.cursorRects();
    ASSERT_TRUE(rects.has_value());
    ASSERT_GE(rects->size(), 8);
    // The handles come last, so that they win over the editor's own.
    const qsizetype first = rects->size() - 8;
    for (int i = 0; i < 8; ++i) {
        const Handle handle = glimpso::allHandles[size_t(i)];
        EXPECT_EQ(rects->at(first + i).rect, glimpso::hitBox(handle, rect, 26));
        EXPECT_EQ(rects->at(first + i).cursor, glimpso::cursor(handle));
    }
}

TEST(SelectionCanvas, TheSizeReadoutCountsPixelsOfTheDensestDisplayTouched)
{
    Harness h;
    h.canvas.mouseDown({100, 100});
    h.canvas.mouseDragged({300, 150}, Qt::NoModifier);
    EXPECT_EQ(h.surfaces.first()->readoutText, QStringLiteral("200 × 50"));
    // Reaching onto the scale 2 display doubles the figures.
    h.canvas.mouseDragged({450, 150}, Qt::NoModifier);
    EXPECT_EQ(h.surfaces.first()->readoutText, QStringLiteral("700 × 100"));
    // Its screen is the one under the selection's top right corner.
    EXPECT_EQ(h.surfaces.first()->readoutScreen, rightFrame);
}

TEST(SelectionCanvas, TheToolbarHearsThePixelSize)
{
    Harness h;
    h.arm(QRectF(100, 100, 120, 40));
    EXPECT_EQ(h.toolbar->size, QSize(120, 40));
}

TEST(SelectionCanvas, TheBadgeSitsRightOfTheTopRightCornerAndKeepsAMargin)
{
    const QRectF screen(0, 0, 400, 300);
    const QSizeF text(50, 13);
    // W = 66, H = 21.
    EXPECT_EQ(SelectionCanvas::sizeBadgeFrame(QRectF(100, 100, 100, 50), text, screen), QRectF(206, 129, 66, 21));
    // At the right edge: moved left to keep 4 points, over the selection.
    EXPECT_EQ(SelectionCanvas::sizeBadgeFrame(QRectF(300, 100, 98, 50), text, screen), QRectF(330, 129, 66, 21));
    // At the top edge: moved down.
    EXPECT_EQ(SelectionCanvas::sizeBadgeFrame(QRectF(100, 100, 100, 200), text, screen), QRectF(206, 275, 66, 21));
}

TEST(SelectionCanvas, TheToolbarGoesBelowTheSelectionWhenThereIsRoom)
{
    const QRectF screen(0, 0, 1000, 800);
    const QRectF frame = SelectionCanvas::toolbarFrame(QRectF(300, 300, 400, 200), 500, screen);
    EXPECT_EQ(frame, QRectF(250, 300 - 18 - 40, 500, 40));
}

TEST(SelectionCanvas, TheToolbarGoesAboveWhenBelowHasNoRoom)
{
    const QRectF screen(0, 0, 1000, 800);
    const QRectF frame = SelectionCanvas::toolbarFrame(QRectF(300, 50, 400, 200), 500, screen);
    EXPECT_EQ(frame, QRectF(250, 250 + 18, 500, 40));
}

TEST(SelectionCanvas, TheToolbarGoesInsideWhenNeitherSideHasRoom)
{
    const QRectF screen(0, 0, 1000, 800);
    const QRectF frame = SelectionCanvas::toolbarFrame(QRectF(300, 50, 400, 700), 500, screen);
    EXPECT_EQ(frame, QRectF(250, 50 + 18, 500, 40));
}

TEST(SelectionCanvas, TheToolbarIsAtLeastItsMinimumWidthAndStaysOnScreen)
{
    const QRectF screen(0, 0, 1000, 800);
    // Narrow fitting width: the minimum of 480.
    EXPECT_EQ(SelectionCanvas::toolbarFrame(QRectF(300, 300, 400, 200), 100, screen).width(), 480);
    // Near the right edge: pulled left to keep the margin.
    EXPECT_EQ(SelectionCanvas::toolbarFrame(QRectF(900, 300, 100, 200), 500, screen).x(), 1000 - 500 - 18);
    // Near the left edge: pushed right.
    EXPECT_EQ(SelectionCanvas::toolbarFrame(QRectF(0, 300, 100, 200), 500, screen).x(), 18);
    // A screen narrower than the toolbar: the left margin wins.
    EXPECT_EQ(SelectionCanvas::toolbarFrame(QRectF(0, 300, 100, 200), 500, QRectF(0, 0, 400, 800)).x(), 18);
}

TEST(SelectionCanvas, TheToolbarHopsToTheDisplayUnderTheSelection)
{
    Harness h;
    h.arm(QRectF(100, 150, 100, 50));
    ASSERT_TRUE(h.toolbar);
    EXPECT_EQ(h.toolbar->host, h.surfaces.at(0));
    h.canvas.editor().setCurrentTool(Tool::move);
    h.canvas.mouseDown({150, 175});
    h.canvas.mouseDragged({550, 175}, Qt::NoModifier);
    EXPECT_EQ(*h.canvas.armedRect(), QRectF(500, 150, 100, 50));
    EXPECT_EQ(h.toolbar->host, h.surfaces.at(1));
}

TEST(SelectionCanvas, AWidthChangeOfTheToolbarPlacesItAgain)
{
    Harness h;
    h.arm(QRectF(100, 150, 100, 50));
    const int before = h.toolbar->placements;
    h.toolbar->width = 600;
    ASSERT_TRUE(h.toolbar->widthChanged);
    h.toolbar->widthChanged();
    EXPECT_EQ(h.toolbar->placements, before + 1);
    EXPECT_EQ(h.toolbar->placed.width(), 600);
}

TEST(SelectionCanvas, TheScreenNearAPointIsTheFirstHoldingItElseTheNearest)
{
    Harness h;
    EXPECT_EQ(h.canvas.screenFrame({10, 10}), leftFrame);
    EXPECT_EQ(h.canvas.screenFrame({400, 10}), rightFrame); // a left edge belongs to its frame
    EXPECT_EQ(h.canvas.screenFrame({650, 250}), rightFrame); // above the right display, nearest to it
    EXPECT_EQ(h.canvas.screenFrame({-50, 100}), leftFrame);
    // Equally far from both (in the gap above the right display's top,
    // touching the left's right edge): the earlier display wins.
    EXPECT_EQ(h.canvas.screenFrame({400, 250}), leftFrame);
}

TEST(SelectionCanvas, WithoutDisplaysTheScreenIsTheBounds)
{
    Harness h(CaptureIntent::image, EditMode::onScreen, {});
    EXPECT_EQ(h.canvas.screenFrame({10, 10}), h.canvas.bounds());
    EXPECT_EQ(h.canvas.surface({10, 10}), nullptr);
}

TEST(SelectionCanvas, TheSurfaceNearAPointShowsThatDisplay)
{
    Harness h;
    EXPECT_EQ(h.canvas.surface({10, 10}), h.surfaces.at(0));
    EXPECT_EQ(h.canvas.surface({500, 10}), h.surfaces.at(1));
}

TEST(SelectionCanvas, TheHudGoesToEveryDisplayWithTheFrameNearThePoint)
{
    Harness h;
    h.canvas.showHUD(QStringLiteral("Width 5"), {500, 50});
    for (FakeSurface *surface : std::as_const(h.surfaces)) {
        EXPECT_EQ(surface->hudText, QStringLiteral("Width 5"));
        EXPECT_EQ(surface->hudScreen, rightFrame);
        EXPECT_EQ(surface->hudNear, QPointF(500, 50));
    }
}

TEST(SelectionCanvas, EditorDrawingIsPassedToEveryDisplay)
{
    Harness h;
    h.canvas.renderAnnotations({});
    h.canvas.renderAnnotationSelection(std::nullopt);
    h.canvas.renderPointHandles(std::nullopt);
    h.canvas.renderPreview(std::nullopt, Qt::red, 3, Qt::transparent);
    h.canvas.renderMosaicPreview(std::nullopt, 16);
    for (FakeSurface *surface : std::as_const(h.surfaces)) {
        for (const char *call : {"annotations", "outline", "points", "preview", "mosaic"})
            EXPECT_TRUE(surface->calls.contains(QLatin1String(call))) << call;
    }
}

TEST(SelectionCanvas, AResizeRendersThenPlacesThenInvalidatesCursorsInThatOrder)
{
    Harness h;
    h.arm(QRectF(100, 100, 100, 50));
    h.surfaces.first()->calls.clear();
    h.canvas.mouseDown({200, 100});
    h.canvas.mouseDragged({210, 90}, Qt::NoModifier);
    EXPECT_EQ(h.surfaces.first()->calls, QStringList({"selection", "readout", "cursors"}));
}
