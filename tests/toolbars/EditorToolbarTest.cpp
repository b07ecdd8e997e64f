#include "../overlay/FakeSurface.h"
#include "ToolbarFixture.h"
#include "overlay/SelectionCanvas.h"
#include "toolbars/ColorChip.h"
#include "toolbars/ColorPalette.h"
#include "toolbars/EditorToolbar.h"
#include "toolbars/SizeChip.h"
#include "toolbars/SizePopoverController.h"
#include "toolbars/TextOptionsControl.h"
#include "toolbars/ToolbarChip.h"
#include "toolbars/ToolbarSeparator.h"
#include "toolbars/ToolbarTable.h"

#include <QColorDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

using glimpso::Tool;

namespace {

// A display whose toolbar host is a plain widget; global points map to it
// by turning y down within a 1000-point-high screen.
class HostingSurface : public FakeSurface
{
public:
    explicit HostingSurface(QRectF frame) : FakeSurface(frame)
    {
        widget.resize(frame.size().toSize());
        widget.show();
    }
    std::optional<ToolbarHost> toolbarHost() override
    {
        return ToolbarHost{&widget, [this](const QRectF &global) {
                               return QRectF(global.x() - screenFrame().x(), screenFrame().bottom() - global.bottom(),
                                             global.width(), global.height());
                           }};
    }
    QWidget widget;
};

// A floating toolbar in a shown window, as on the overlay.
struct ToolbarInWindow : ToolbarFixture {
    explicit ToolbarInWindow(QSize size) : toolbar(true, handler(), settings, &window)
    {
        window.resize(size);
        window.show();
    }
    QWidget window;
    EditorToolbar toolbar;
};

struct CanvasWithToolbar : ToolbarFixture {
    CanvasWithToolbar()
        : canvas({snapshot()}, CaptureIntent::image, settings, [this](const RegionResult &) { ++results; })
    {
        canvas.addSurface(&surface);
        canvas.setToolbarFactory([this](std::function<void(const EditorAction &)> toCanvas) {
            auto made = std::make_unique<EditorToolbar>(
                true,
                [this, toCanvas](const EditorAction &action) {
                    sent.append(action);
                    toCanvas(action);
                },
                settings);
            toolbar = made.get();
            return made;
        });
    }
    static ScreenSnapshot snapshot()
    {
        QImage image(1600, 1000, QImage::Format_RGB32);
        image.fill(Qt::gray);
        return {1, image, QRectF(0, 0, 1600, 1000), 1};
    }
    void drag(QPointF from, QPointF to)
    {
        canvas.mouseDown(from);
        canvas.mouseDragged((from + to) / 2, Qt::NoModifier);
        canvas.mouseDragged(to, Qt::NoModifier);
        canvas.mouseUp(to);
    }

    HostingSurface surface{QRectF(0, 0, 1600, 1000)};
    SelectionCanvas canvas;
    EditorToolbar *toolbar = nullptr;
    int results = 0;
};

QList<EditorAction::Kind> kindsOf(const QList<EditorAction> &actions)
{
    QList<EditorAction::Kind> kinds;
    for (const EditorAction &action : actions)
        kinds.append(action.kind());
    return kinds;
}

} // namespace

TEST(EditorToolbar, IsAtLeastTheCanvasMinimumWideAndFortyHigh)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    EXPECT_GE(toolbar.fittingWidth(), SelectionCanvas::toolbarMinimumWidth);
    EXPECT_EQ(toolbar.height(), int(SelectionCanvas::toolbarHeight));
}

TEST(EditorToolbar, AClickOnEachToolChipSelectsThatTool)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    for (const ToolbarTable::ToolChip &entry : ToolbarTable::tools) {
        fixture.sent.clear();
        ToolbarChip *chip = toolbar.toolChip(entry.tool);
        ASSERT_NE(chip, nullptr);
        QTest::mouseClick(chip, Qt::LeftButton);
        ASSERT_EQ(fixture.sent.size(), 1);
        EXPECT_EQ(fixture.sent[0].kind(), EditorAction::Kind::selectTool);
        EXPECT_EQ(std::get<Tool>(fixture.sent[0].payload()), entry.tool);
        EXPECT_TRUE(chip->highlighted());
        EXPECT_EQ(chip->toolTip(), ToolbarTable::toolTip(entry, fixture.settings));
    }
}

TEST(EditorToolbar, AClickOnEachActionChipSendsItsAction)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    const QList<EditorAction::Kind> kinds{EditorAction::Kind::undo,     EditorAction::Kind::redo,
                                          EditorAction::Kind::copy,     EditorAction::Kind::copyText,
                                          EditorAction::Kind::save,     EditorAction::Kind::upload,
                                          EditorAction::Kind::close};
    for (const EditorAction::Kind kind : kinds) {
        ToolbarChip *chip = toolbar.actionChip(kind);
        ASSERT_NE(chip, nullptr);
        QTest::mouseClick(chip, Qt::LeftButton);
    }
    EXPECT_EQ(kindsOf(fixture.sent), kinds);
    EXPECT_EQ(toolbar.actionChip(EditorAction::Kind::close)->toolTip(), "Cancel (esc)");
}

TEST(EditorToolbar, ChipsStandInTheTablesOrderWithSeparators)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    toolbar.resize(int(toolbar.fittingWidth()), 40);
    toolbar.show();
    QList<int> lefts;
    for (const Tool tool : {Tool::move, Tool::pencil, Tool::highlight, Tool::line, Tool::arrow, Tool::rect,
                            Tool::ellipse, Tool::sequence, Tool::mosaic, Tool::text})
        lefts.append(toolbar.toolChip(tool)->x());
    lefts.append(toolbar.colorChip()->x());
    lefts.append(toolbar.sizeChip()->x());
    for (const auto kind : {EditorAction::Kind::undo, EditorAction::Kind::redo, EditorAction::Kind::copy,
                            EditorAction::Kind::copyText, EditorAction::Kind::save, EditorAction::Kind::upload,
                            EditorAction::Kind::close})
        lefts.append(toolbar.actionChip(kind)->x());
    EXPECT_TRUE(std::is_sorted(lefts.begin(), lefts.end()));
    EXPECT_EQ(toolbar.separators().size(), 5);
    EXPECT_EQ(toolbar.separators()[0]->size(), QSize(1, 22));
    // Separators take the icon colour at a quarter strength.
    QColor expected = toolbar.chrome().iconColor;
    expected.setAlphaF(expected.alphaF() * 0.25f);
    EXPECT_EQ(toolbar.separators()[0]->color(), expected);
}

TEST(EditorToolbar, WithoutTheSizeThereIsNoSizeChipAndOneSeparatorLess)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(false, fixture.handler(), fixture.settings);
    EXPECT_EQ(toolbar.sizeChip(), nullptr);
    EXPECT_EQ(toolbar.separators().size(), 4);
}

TEST(EditorToolbar, SetSelectedToolLightsExactlyThatChipAndNoneLeavesAllDark)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    toolbar.setSelectedTool(Tool::ellipse);
    for (const ToolbarTable::ToolChip &entry : ToolbarTable::tools)
        EXPECT_EQ(toolbar.toolChip(entry.tool)->highlighted(), entry.tool == Tool::ellipse);
    toolbar.setSelectedTool(Tool::none);
    for (const ToolbarTable::ToolChip &entry : ToolbarTable::tools)
        EXPECT_FALSE(toolbar.toolChip(entry.tool)->highlighted());
    EXPECT_TRUE(fixture.sent.isEmpty()) << "showing a tool sends nothing";
}

TEST(EditorToolbar, SetSelectedColorShowsItWithoutSendingIt)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    toolbar.setSelectedColor(QColor(0, 122, 255));
    EXPECT_EQ(toolbar.colorChip()->color(), QColor(0, 122, 255));
    EXPECT_TRUE(fixture.sent.isEmpty());
}

TEST(EditorToolbar, StartsWithTheDefaultColour)
{
    ToolbarFixture fixture;
    fixture.settings.defaultColorHex.set("#34C759");
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    EXPECT_EQ(toolbar.colorChip()->color(), QColor(0x34, 0xC7, 0x59));
}

TEST(EditorToolbar, PickingASwatchSendsTheColour)
{
    ToolbarInWindow fixture(QSize(900, 300));
    EditorToolbar &toolbar = fixture.toolbar;
    QWidget &window = fixture.window;
    toolbar.setGeometry(10, 10, int(toolbar.fittingWidth()), 40);
    QTest::mouseClick(toolbar.colorChip(), Qt::LeftButton);
    ColorPalette *palette = toolbar.colorChip()->palette();
    ASSERT_NE(palette, nullptr);
    EXPECT_GT(palette->y(), toolbar.colorChip()->mapTo(&window, QPoint()).y()) << "opens under the chip";
    QTest::mouseClick(static_cast<QPushButton *>(palette->swatchFor(QColor(0x007AFF))), Qt::LeftButton);
    ASSERT_EQ(fixture.sent.size(), 1);
    EXPECT_EQ(fixture.sent[0].kind(), EditorAction::Kind::selectColor);
    EXPECT_EQ(std::get<QColor>(fixture.sent[0].payload()), QColor(0x007AFF));
    EXPECT_EQ(toolbar.colorChip()->color(), QColor(0x007AFF));
    EXPECT_EQ(toolbar.colorChip()->palette(), nullptr) << "the panel closes on a pick";
}

TEST(EditorToolbar, APressOutsideTheColourPanelClosesIt)
{
    ToolbarInWindow fixture(QSize(900, 300));
    EditorToolbar &toolbar = fixture.toolbar;
    QWidget &window = fixture.window;
    toolbar.colorChip()->openPalette();
    ASSERT_NE(toolbar.colorChip()->palette(), nullptr);
    QTest::mouseClick(&window, Qt::LeftButton, {}, QPoint(880, 290));
    EXPECT_EQ(toolbar.colorChip()->palette(), nullptr);
    EXPECT_TRUE(fixture.sent.isEmpty());
}

TEST(EditorToolbar, TheSizeChipShowsPixelsAndItsPanelSetsAnExactSize)
{
    ToolbarInWindow fixture(QSize(900, 300));
    EditorToolbar &toolbar = fixture.toolbar;
    toolbar.setCurrentSize(QSize(1280, 720));
    EXPECT_EQ(toolbar.sizeChip()->widthText(), "1280");
    EXPECT_EQ(toolbar.sizeChip()->heightText(), "720");
    QTest::mouseClick(toolbar.sizeChip(), Qt::LeftButton);
    SizePopoverController *popover = toolbar.sizePopover();
    ASSERT_NE(popover, nullptr);
    EXPECT_TRUE(toolbar.sizeChip()->highlighted());
    EXPECT_EQ(popover->widthField()->text(), "1280");
    EXPECT_EQ(popover->heightField()->text(), "720");
    popover->widthField()->setText("640");
    QTest::mouseClick(popover->applyButton(), Qt::LeftButton);
    ASSERT_EQ(fixture.sent.size(), 1);
    EXPECT_EQ(fixture.sent[0].kind(), EditorAction::Kind::setSize);
    EXPECT_EQ(std::get<QSize>(fixture.sent[0].payload()), QSize(640, 720));
    EXPECT_FALSE(toolbar.sizeChip()->highlighted()) << "the highlight goes when the panel closes";
}

TEST(EditorToolbar, ASecondClickOnTheSizeChipClosesItsPanel)
{
    ToolbarInWindow fixture(QSize(900, 300));
    EditorToolbar &toolbar = fixture.toolbar;
    toolbar.toggleSizePopover();
    ASSERT_TRUE(toolbar.sizePopover()->isOpen());
    toolbar.toggleSizePopover();
    EXPECT_FALSE(toolbar.sizePopover()->isOpen());
    EXPECT_FALSE(toolbar.sizeChip()->highlighted());
}

TEST(EditorToolbar, TextOptionsWidenTheToolbarAndAskToBePlacedAgainOnlyOnAChange)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    int replacements = 0;
    toolbar.setOnWidthChange([&] { ++replacements; });
    const qreal narrow = toolbar.fittingWidth();
    toolbar.showTextOptions(glimpso::TextOptions{32, glimpso::TextStyle::outline, glimpso::TextFont::serif()});
    EXPECT_EQ(replacements, 1);
    EXPECT_GT(toolbar.fittingWidth(), narrow);
    EXPECT_EQ(toolbar.textOptions()->options().size, 32);
    toolbar.showTextOptions(glimpso::TextOptions{40, glimpso::TextStyle::plain, glimpso::TextFont::system()});
    EXPECT_EQ(replacements, 1) << "still shown: no new placement";
    EXPECT_EQ(toolbar.textOptions()->options().size, 40);
    toolbar.showTextOptions(std::nullopt);
    EXPECT_EQ(replacements, 2);
    EXPECT_EQ(toolbar.fittingWidth(), narrow);
}

TEST(EditorToolbar, GlassComesAndGoesWithTheBackgroundSetting)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    EXPECT_TRUE(toolbar.hasGlassView()) << "glass is the default";
    fixture.settings.toolbarBgColorHex.set("#202020");
    EXPECT_FALSE(toolbar.hasGlassView());
    EXPECT_EQ(toolbar.chrome().background.rgb(), QColor(0x20, 0x20, 0x20).rgb());
    fixture.settings.toolbarBgColorHex.set("glass");
    EXPECT_TRUE(toolbar.hasGlassView());
}

TEST(EditorToolbar, ChromeSettingsReachEveryChip)
{
    ToolbarFixture fixture;
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings);
    fixture.settings.toolbarIconColorHex.set("#FF9500");
    fixture.settings.toolbarCornerRadius.set(4.0);
    EXPECT_EQ(toolbar.toolChip(Tool::pencil)->tint(), QColor(0xFF, 0x95, 0x00));
    EXPECT_EQ(toolbar.actionChip(EditorAction::Kind::save)->tint(), QColor(0xFF, 0x95, 0x00));
    EXPECT_EQ(toolbar.colorChip()->tint(), QColor(0xFF, 0x95, 0x00));
    EXPECT_EQ(toolbar.chrome().cornerRadius, 4);
}

TEST(EditorToolbar, TheCanvasPlacesItBelowTheSelectionInItsDisplaysWindow)
{
    CanvasWithToolbar harness;
    harness.drag(QPointF(400, 700), QPointF(1200, 300));
    ASSERT_NE(harness.toolbar, nullptr);
    EXPECT_EQ(harness.toolbar->parentWidget(), &harness.surface.widget);
    EXPECT_TRUE(harness.toolbar->isVisible());
    // The selection runs from y 300 to 700 (y up), so the toolbar's top is 18
    // below its lower edge: 1000 - 300 + 18 in the window.
    EXPECT_EQ(harness.toolbar->geometry().top(), 718);
    EXPECT_EQ(harness.toolbar->geometry().height(), 40);
    EXPECT_NEAR(harness.toolbar->geometry().center().x(), 800, 1);
    EXPECT_EQ(harness.toolbar->selectedTool(), Tool::rect) << "a capture starts with the rectangle";
    EXPECT_EQ(harness.toolbar->currentSize(), QSize(800, 400));
}

TEST(EditorToolbar, WithTheTextToolItGrowsAndStaysOnTheScreen)
{
    CanvasWithToolbar harness;
    harness.drag(QPointF(1300, 700), QPointF(1580, 300));
    const int before = harness.toolbar->width();
    QTest::mouseClick(harness.toolbar->toolChip(Tool::text), Qt::LeftButton);
    EXPECT_TRUE(harness.toolbar->textOptions()->isVisibleTo(harness.toolbar));
    EXPECT_GT(harness.toolbar->width(), before);
    EXPECT_LE(harness.toolbar->geometry().right(), 1600 - int(SelectionCanvas::toolbarMargin));
}

TEST(EditorToolbar, AClickOnTheSelectedToolPutsItDownAndDrawingStops)
{
    CanvasWithToolbar harness;
    harness.drag(QPointF(400, 700), QPointF(1200, 300));
    ASSERT_EQ(harness.canvas.editor().currentTool(), Tool::rect);
    QTest::mouseClick(harness.toolbar->toolChip(Tool::rect), Qt::LeftButton);
    EXPECT_EQ(harness.canvas.editor().currentTool(), Tool::none);
    EXPECT_FALSE(harness.toolbar->toolChip(Tool::rect)->highlighted());
    harness.drag(QPointF(500, 600), QPointF(700, 400));
    EXPECT_TRUE(harness.canvas.editor().annotations().isEmpty()) << "no tool, no mark";
    // The selection's inside shows the plain arrow, not a drawing cursor.
    const std::optional<QList<glimpso::CursorRect>> cursors = harness.canvas.cursorRects();
    ASSERT_TRUE(cursors);
    const bool arrowInside = std::any_of(cursors->begin(), cursors->end(), [](const glimpso::CursorRect &rect) {
        return rect.rect.contains(QPointF(600, 500)) && rect.cursor == Qt::ArrowCursor;
    });
    EXPECT_TRUE(arrowInside);
    for (const glimpso::CursorRect &rect : *cursors)
        EXPECT_FALSE(rect.rect.contains(QPointF(600, 500)) && rect.cursor == Qt::CrossCursor);
}

TEST(EditorToolbar, ToolbarActionsReachTheEditor)
{
    CanvasWithToolbar harness;
    harness.drag(QPointF(400, 700), QPointF(1200, 300));
    QTest::mouseClick(harness.toolbar->toolChip(Tool::ellipse), Qt::LeftButton);
    harness.drag(QPointF(500, 600), QPointF(700, 400));
    ASSERT_EQ(harness.canvas.editor().annotations().size(), 1);
    QTest::mouseClick(harness.toolbar->actionChip(EditorAction::Kind::undo), Qt::LeftButton);
    EXPECT_TRUE(harness.canvas.editor().annotations().isEmpty());
    QTest::mouseClick(harness.toolbar->actionChip(EditorAction::Kind::redo), Qt::LeftButton);
    EXPECT_EQ(harness.canvas.editor().annotations().size(), 1);
    QTest::mouseClick(harness.toolbar->actionChip(EditorAction::Kind::close), Qt::LeftButton);
    EXPECT_EQ(harness.results, 1);
}

TEST(EditorToolbar, MoreOpensTheFullChooserInsideTheSameWindow)
{
    ToolbarInWindow fixture(QSize(1000, 700));
    EditorToolbar &toolbar = fixture.toolbar;
    QWidget &window = fixture.window;
    toolbar.colorChip()->openPalette();
    QTest::mouseClick(toolbar.colorChip()->palette()->moreButton(), Qt::LeftButton);
    auto *chooser = window.findChild<QColorDialog *>();
    ASSERT_NE(chooser, nullptr);
    EXPECT_FALSE(chooser->isWindow()) << "a window of its own would open under the frozen screen";
    EXPECT_TRUE(chooser->isVisible());
    EXPECT_EQ(chooser->currentColor(), toolbar.colorChip()->color());
    chooser->setCurrentColor(QColor(0x12, 0x34, 0x56));
    chooser->accept();
    ASSERT_EQ(fixture.sent.size(), 1);
    EXPECT_EQ(std::get<QColor>(fixture.sent[0].payload()), QColor(0x12, 0x34, 0x56));
    EXPECT_EQ(toolbar.colorChip()->color(), QColor(0x12, 0x34, 0x56));
}
