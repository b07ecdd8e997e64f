#include "toolbars/SizePopoverController.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

TEST(SizePopoverController, SidesAreWholeNumbersFromOneTo20000)
{
    EXPECT_EQ(SizePopoverController::side("1"), 1);
    EXPECT_EQ(SizePopoverController::side("20000"), 20000);
    EXPECT_EQ(SizePopoverController::side(" 640 "), 640);
    EXPECT_FALSE(SizePopoverController::side("0"));
    EXPECT_FALSE(SizePopoverController::side("20001"));
    EXPECT_FALSE(SizePopoverController::side("12.5"));
    EXPECT_FALSE(SizePopoverController::side("12,5"));
    EXPECT_FALSE(SizePopoverController::side("-4"));
    EXPECT_FALSE(SizePopoverController::side(""));
}

TEST(SizePopoverController, ApplySendsBothSidesAndCloses)
{
    QWidget window;
    window.resize(600, 400);
    QWidget anchor(&window);
    anchor.setGeometry(100, 100, 44, 28);
    window.show();
    SizePopoverController popover(QSize(300, 200), &window);
    std::optional<QSize> applied;
    popover.onApply = [&](int width, int height) { applied = QSize(width, height); };
    popover.showBelow(&anchor);
    EXPECT_EQ(popover.widthField()->text(), "300");
    EXPECT_EQ(popover.heightField()->text(), "200");
    EXPECT_EQ(popover.size(), QSize(200, 72));
    EXPECT_EQ(popover.geometry().top(), 100 + 28 + 4);

    popover.widthField()->setText("1280");
    QTest::mouseClick(popover.applyButton(), Qt::LeftButton);
    ASSERT_TRUE(applied);
    EXPECT_EQ(*applied, QSize(1280, 200));
    EXPECT_FALSE(popover.isOpen());
}

TEST(SizePopoverController, RefusesZeroTooLargeAndFractions)
{
    QWidget window;
    window.resize(600, 400);
    window.show();
    SizePopoverController popover(QSize(300, 200), &window);
    int applies = 0;
    popover.onApply = [&](int, int) { ++applies; };
    popover.showBelow(&window);
    for (const QString &bad : {QStringLiteral("0"), QStringLiteral("20001"), QStringLiteral("1.5")}) {
        popover.heightField()->setText(bad);
        EXPECT_FALSE(popover.apply()) << bad.toStdString();
    }
    EXPECT_EQ(applies, 0);
    EXPECT_TRUE(popover.isOpen()) << "the panel stays open for a fix";
}

TEST(SizePopoverController, FractionsCannotEvenBeTyped)
{
    SizePopoverController popover(QSize(300, 200));
    popover.widthField()->clear();
    QTest::keyClicks(popover.widthField(), "12.5");
    EXPECT_EQ(popover.widthField()->text(), "125");
}

TEST(SizePopoverController, ReturnInAFieldApplies)
{
    QWidget window;
    window.resize(600, 400);
    window.show();
    SizePopoverController popover(QSize(300, 200), &window);
    std::optional<QSize> applied;
    popover.onApply = [&](int width, int height) { applied = QSize(width, height); };
    popover.showBelow(&window);
    popover.heightField()->setText("90");
    QTest::keyClick(popover.heightField(), Qt::Key_Return);
    ASSERT_TRUE(applied);
    EXPECT_EQ(*applied, QSize(300, 90));
}
