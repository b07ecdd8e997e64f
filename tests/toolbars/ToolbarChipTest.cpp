#include "toolbars/ToolbarChip.h"

#include <QEnterEvent>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

void hover(ToolbarChip &chip, bool on)
{
    if (on) {
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
        QApplication::sendEvent(&chip, &enter);
    } else {
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(&chip, &leave);
    }
}

QColor tinted(QColor colour, qreal alpha)
{
    colour.setAlphaF(float(alpha));
    return colour;
}

} // namespace

TEST(ToolbarChip, PlainChipsLightInTheirTint)
{
    ToolbarChip chip(Lucide::pencil, "Pencil", ToolbarChip::Metrics::floating(), false);
    chip.setTint(QColor(10, 20, 30));
    EXPECT_EQ(chip.backgroundColor().alpha(), 0);
    EXPECT_EQ(chip.iconColor(), QColor(10, 20, 30));
    hover(chip, true);
    EXPECT_EQ(chip.backgroundColor(), tinted(QColor(10, 20, 30), 0.12));
    chip.setHighlighted(true);
    EXPECT_EQ(chip.backgroundColor(), tinted(QColor(10, 20, 30), 0.22)) << "hovering counts only when not highlighted";
    hover(chip, false);
    EXPECT_EQ(chip.backgroundColor(), tinted(QColor(10, 20, 30), 0.22));
    EXPECT_EQ(chip.backgroundRect(), QRectF(0, 0, 28, 28));
}

TEST(ToolbarChip, AccentChipsFillWithTheAccentAndTurnTheIconWhite)
{
    ToolbarChip chip(Lucide::pencil, "Pencil", ToolbarChip::Metrics::header(), true);
    chip.setTint(QColor(10, 20, 30));
    chip.setHighlighted(true);
    EXPECT_EQ(chip.backgroundColor(), chip.palette().color(QPalette::Highlight));
    EXPECT_EQ(chip.iconColor(), QColor(Qt::white));
    EXPECT_EQ(chip.backgroundRect(), QRectF(3, 3, 22, 22)) << "inset by the selection inset";
    chip.setHighlighted(false);
    hover(chip, true);
    QColor label = chip.palette().color(QPalette::WindowText);
    label.setAlphaF(label.alphaF() * 0.08f);
    EXPECT_EQ(chip.backgroundColor(), label);
    EXPECT_EQ(chip.iconColor(), QColor(10, 20, 30));
}

TEST(ToolbarChip, APressFiresTheClickAndTheTipIsTheAccessibleName)
{
    ToolbarChip chip(Lucide::copy, "Copy (Ctrl+C)", ToolbarChip::Metrics::floating(), false);
    int clicks = 0;
    chip.onClick = [&] { ++clicks; };
    QTest::mouseClick(&chip, Qt::LeftButton);
    QTest::mouseClick(&chip, Qt::RightButton);
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(chip.toolTip(), "Copy (Ctrl+C)");
    EXPECT_EQ(chip.accessibleName(), "Copy (Ctrl+C)");
    EXPECT_EQ(chip.size(), QSize(28, 28));
}
