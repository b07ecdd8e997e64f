// The small pieces the settings pages are built from: icon tiles, status
// pills, row dividers, the button styles and the application's icon.
#include "appui/AppIconImage.h"
#include "appui/IconTile.h"
#include "appui/PrimaryButtonStyle.h"
#include "appui/RowDivider.h"
#include "appui/SecondaryButtonStyle.h"
#include "appui/StatusPill.h"
#include "appui/Theme.h"

#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

// Draws a widget into an image of the given scale over a known background.
QImage rendered(QWidget &widget, qreal devicePixelRatio = 1.0, QColor background = Qt::transparent)
{
    widget.ensurePolished();
    QImage image(widget.size() * devicePixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(background);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

bool sameColour(QColor a, QColor b, int tolerance = 2)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance
        && std::abs(a.blue() - b.blue()) <= tolerance;
}

int countRowsWithInk(const QImage &image, int column)
{
    int rows = 0;
    for (int y = 0; y < image.height(); ++y)
        rows += qAlpha(image.pixel(column, y)) > 0 ? 1 : 0;
    return rows;
}

} // namespace

TEST(IconTile, IsARoundedSquareOfItsColourWithAWhiteSymbol)
{
    IconTile tile(Lucide::settings, Theme::tile(Theme::Tile::blue), 28, 16);
    EXPECT_EQ(tile.sizeHint(), QSize(28, 28));
    const QImage image = rendered(tile);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0) << "corners are rounded";
    EXPECT_TRUE(sameColour(image.pixelColor(3, 14), Theme::tile(Theme::Tile::blue)));
    bool anyWhite = false;
    for (int y = 6; y < 22; ++y)
        for (int x = 6; x < 22; ++x)
            anyWhite = anyWhite || sameColour(image.pixelColor(x, y), Qt::white, 8);
    EXPECT_TRUE(anyWhite);
}

TEST(RowDivider, IsOneDevicePixelThickAtEveryScale)
{
    RowDivider divider;
    divider.resize(100, 1);
    for (const qreal ratio : {1.0, 2.0, 3.0}) {
        SCOPED_TRACE(ratio);
        const QImage image = rendered(divider, ratio);
        EXPECT_EQ(countRowsWithInk(image, image.width() / 2), 1);
    }
    EXPECT_DOUBLE_EQ(RowDivider::thickness(2.0), 0.5);
}

TEST(RowDivider, StartsAtItsInsetInTheHairlineColour)
{
    RowDivider divider(40);
    divider.resize(100, 1);
    const QImage image = rendered(divider);
    EXPECT_EQ(qAlpha(image.pixel(20, 0)), 0);
    EXPECT_EQ(qAlpha(image.pixel(60, 0)), Theme::color(Theme::Color::hairline).alpha());
}

TEST(StatusPill, SuccessIsGreenInkOnTheGreenTintAndNeutralIsSecondaryInkOnControl)
{
    StatusPill pill(QStringLiteral("Connected"), StatusPill::Kind::success);
    pill.resize(pill.sizeHint());
    EXPECT_EQ(pill.fillColor(), Theme::color(Theme::Color::successTint));
    EXPECT_EQ(pill.inkColor(), Theme::color(Theme::Color::successInk));
    const QImage image = rendered(pill);
    EXPECT_TRUE(sameColour(image.pixelColor(image.width() / 2, 2), Theme::color(Theme::Color::successTint)));

    pill.setKind(StatusPill::Kind::neutral);
    EXPECT_EQ(pill.fillColor(), Theme::color(Theme::Color::control));
    EXPECT_EQ(pill.inkColor(), Theme::color(Theme::Color::inkSecondary));
}

TEST(StatusPill, ACheckOrADotMakesRoomBeforeTheText)
{
    StatusPill plain(QStringLiteral("Up to date"), StatusPill::Kind::success);
    StatusPill checked(QStringLiteral("Up to date"), StatusPill::Kind::success);
    checked.setShowCheck(true);
    StatusPill dotted(QStringLiteral("Up to date"), StatusPill::Kind::neutral);
    dotted.setDot(QColor(Qt::red));
    EXPECT_GT(checked.sizeHint().width(), plain.sizeHint().width());
    EXPECT_GT(dotted.sizeHint().width(), plain.sizeHint().width());
}

TEST(StatusPill, DrawsItsDotInTheDotsColour)
{
    StatusPill pill(QStringLiteral("Recording"), StatusPill::Kind::neutral);
    pill.setDot(QColor(0xFF, 0x00, 0x00));
    pill.resize(pill.sizeHint());
    const QImage image = rendered(pill);
    // The dot sits at the padding, centred in height.
    EXPECT_TRUE(sameColour(image.pixelColor(13, image.height() / 2), QColor(0xFF, 0x00, 0x00), 10));
}

TEST(StatusPill, GrowsWithItsText)
{
    StatusPill pill(QStringLiteral("On"));
    const int shortWidth = pill.sizeHint().width();
    pill.setText(QStringLiteral("Checking for updates"));
    EXPECT_GT(pill.sizeHint().width(), shortWidth);
}

TEST(ButtonStyles, PrimaryIsWhiteOnTheAccentAtItsHeight)
{
    QPushButton button(QStringLiteral("Test upload"));
    auto *style = new PrimaryButtonStyle(30);
    style->apply(&button);
    EXPECT_EQ(style->parent(), &button);
    EXPECT_EQ(button.sizeHint().height(), 30);
    EXPECT_GT(button.sizeHint().width(), button.fontMetrics().horizontalAdvance(button.text()));
    button.resize(button.sizeHint());
    const QImage image = rendered(button);
    EXPECT_TRUE(sameColour(image.pixelColor(4, 15), Theme::color(Theme::Color::accent)));
}

TEST(ButtonStyles, SecondaryTakesControlAndInkUnlessGivenItsOwn)
{
    SecondaryButtonStyle plain;
    EXPECT_EQ(plain.fill(), Theme::color(Theme::Color::control));
    EXPECT_EQ(plain.ink(), Theme::color(Theme::Color::ink));
    SecondaryButtonStyle danger(26, 11, Theme::color(Theme::Color::successTint), Theme::color(Theme::Color::danger),
                                QFont::Bold);
    EXPECT_EQ(danger.fill(), Theme::color(Theme::Color::successTint));
    EXPECT_EQ(danger.ink(), Theme::color(Theme::Color::danger));
    EXPECT_EQ(danger.font().pointSizeF(), 11);
    EXPECT_EQ(danger.font().weight(), QFont::Bold);
}

TEST(ButtonStyles, APressedButtonIsDarkerAndADisabledOneFaded)
{
    QPushButton button(QStringLiteral("Reset"));
    (new SecondaryButtonStyle(28))->apply(&button);
    button.resize(button.sizeHint());
    const QPoint inside(4, 14);
    const QColor rest = rendered(button).pixelColor(inside);
    button.setDown(true);
    const QColor pressed = rendered(button).pixelColor(inside);
    button.setDown(false);
    button.setEnabled(false);
    const QColor disabled = rendered(button).pixelColor(inside);
    EXPECT_LT(pressed.lightness(), rest.lightness());
    EXPECT_LT(disabled.alpha(), rest.alpha());
}

TEST(ButtonStyles, AStyledButtonStillClicks)
{
    QPushButton button(QStringLiteral("Send"));
    (new PrimaryButtonStyle)->apply(&button);
    button.resize(button.sizeHint());
    button.show();
    QSignalSpy clicked(&button, &QPushButton::clicked);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(clicked.count(), 1);
}

TEST(AppIconImage, DrawsTheApplicationIconAtItsSize)
{
    for (const int size : {16, 32, 64}) {
        const QImage image = AppIconImage::image(size, 2.0);
        EXPECT_EQ(image.size(), QSize(size * 2, size * 2));
        // The icon's tile fills the middle; its corners are rounded off.
        EXPECT_EQ(qAlpha(image.pixel(image.width() / 2, image.height() / 2)), 255);
        EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
    }
    AppIconImage widget(28);
    EXPECT_EQ(widget.size(), QSize(28, 28));
}
