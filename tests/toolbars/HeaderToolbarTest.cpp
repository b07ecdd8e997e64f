#include "ToolbarFixture.h"
#include "toolbars/AccentButton.h"
#include "toolbars/ColorChip.h"
#include "toolbars/HeaderToolbar.h"
#include "toolbars/TextOptionsControl.h"
#include "toolbars/ToolbarChip.h"
#include "toolbars/ToolbarTable.h"

#include <QTest>

#include <gtest/gtest.h>

using glimpso::Tool;

TEST(HeaderToolbar, ToolChipsUseTheHeaderMetricsAndTheAccentSelection)
{
    ToolbarFixture fixture;
    HeaderToolbar toolbar(fixture.handler(), fixture.settings);
    ToolbarChip *chip = toolbar.toolChip(Tool::arrow);
    ASSERT_NE(chip, nullptr);
    EXPECT_EQ(chip->size(), QSize(28, 28));
    toolbar.setSelectedTool(Tool::arrow);
    EXPECT_EQ(chip->backgroundRect(), QRectF(3, 3, 22, 22));
    EXPECT_EQ(chip->iconColor(), QColor(Qt::white));
}

TEST(HeaderToolbar, EveryChipSendsItsActionToTheOneHandler)
{
    ToolbarFixture fixture;
    HeaderToolbar toolbar(fixture.handler(), fixture.settings);
    QTest::mouseClick(toolbar.toolChip(Tool::pencil), Qt::LeftButton);
    QTest::mouseClick(toolbar.toolChip(Tool::pencil), Qt::LeftButton);
    for (const auto kind : {EditorAction::Kind::undo, EditorAction::Kind::redo, EditorAction::Kind::copy,
                            EditorAction::Kind::upload, EditorAction::Kind::copyText})
        QTest::mouseClick(toolbar.actionChip(kind), Qt::LeftButton);
    QTest::mouseClick(toolbar.saveButton(), Qt::LeftButton);
    ASSERT_EQ(fixture.sent.size(), 8);
    EXPECT_EQ(std::get<Tool>(fixture.sent[0].payload()), Tool::pencil);
    EXPECT_EQ(std::get<Tool>(fixture.sent[1].payload()), Tool::none) << "a second click puts the tool down";
    EXPECT_EQ(fixture.sent[2].kind(), EditorAction::Kind::undo);
    EXPECT_EQ(fixture.sent[6].kind(), EditorAction::Kind::copyText);
    EXPECT_EQ(fixture.sent[7].kind(), EditorAction::Kind::save);
    EXPECT_EQ(toolbar.actionChip(EditorAction::Kind::save), nullptr) << "Save is the accent button";
    EXPECT_EQ(toolbar.actionChip(EditorAction::Kind::close), nullptr) << "the window closes itself";
    EXPECT_EQ(toolbar.saveButton()->toolTip(), "Save (Ctrl+S)");
    EXPECT_EQ(toolbar.saveButton()->height(), 32);
}

TEST(HeaderToolbar, TextOptionsShowAndHideWithTheirPill)
{
    ToolbarFixture fixture;
    HeaderToolbar toolbar(fixture.handler(), fixture.settings);
    toolbar.resize(1200, 52);
    toolbar.show();
    const int narrow = toolbar.leading()->width();
    toolbar.showTextOptions(glimpso::TextOptions{});
    EXPECT_TRUE(toolbar.textOptions()->isVisible());
    EXPECT_GT(toolbar.leading()->width(), narrow);
    toolbar.showTextOptions(std::nullopt);
    EXPECT_FALSE(toolbar.textOptions()->isVisible());
    EXPECT_EQ(toolbar.leading()->width(), narrow);
}

TEST(HeaderToolbar, TheColourChipIsPlainAndShowsTheSelectedColour)
{
    ToolbarFixture fixture;
    HeaderToolbar toolbar(fixture.handler(), fixture.settings);
    toolbar.setSelectedColor(QColor(0xAF52DE));
    EXPECT_EQ(toolbar.colorChip()->color(), QColor(0xAF52DE));
    EXPECT_TRUE(fixture.sent.isEmpty());
}

TEST(HeaderToolbar, LeadingToolsCentreOnTheAnchorAndYieldWhenTight)
{
    // Room enough: centred on the anchor.
    EXPECT_EQ(HeaderToolbar::leadingX(1200, 600, 400, 200), 400);
    // No anchor: at the leading margin.
    EXPECT_EQ(HeaderToolbar::leadingX(1200, std::nullopt, 400, 200), 12);
    // An anchor too far left keeps the 12-point margin.
    EXPECT_EQ(HeaderToolbar::leadingX(1200, 100, 400, 200), 12);
    // An anchor too far right stops short of the trailing stack.
    EXPECT_EQ(HeaderToolbar::leadingX(1200, 1000, 400, 200), 1200 - 12 - 200 - 8 - 400);
    // Tight: the margin wins over everything.
    EXPECT_EQ(HeaderToolbar::leadingX(500, 250, 400, 200), 12);
}

TEST(HeaderToolbar, CenterToolsMovesTheLeadingStack)
{
    ToolbarFixture fixture;
    HeaderToolbar toolbar(fixture.handler(), fixture.settings);
    toolbar.resize(1600, 52);
    toolbar.show();
    toolbar.centerTools(700);
    EXPECT_NEAR(toolbar.leading()->geometry().center().x(), 700, 1);
    EXPECT_EQ(toolbar.trailing()->geometry().right() + 1, 1600 - HeaderToolbar::outerMargin);
}
