#include "overlay/OverlayTextField.h"

#include "annotation/TextLook.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QTest>
#include <QWidget>

namespace {

struct FieldHarness {
    FieldHarness()
        : field(&parent, OverlayTextField::Callbacks{[this] { ++changes; }, [this] { ++commits; },
                                                     [this] { ++cancels; }})
    {
        parent.resize(400, 200);
        parent.show();
        field.setFocus();
    }
    QWidget parent;
    int changes = 0;
    int commits = 0;
    int cancels = 0;
    OverlayTextField field;
};

} // namespace

TEST(OverlayTextField, TypingChangesAndReadsBack)
{
    FieldHarness h;
    QTest::keyClicks(&h.field, QStringLiteral("Hello, glimpso 123"));
    EXPECT_EQ(h.field.text(), QStringLiteral("Hello, glimpso 123"));
    EXPECT_EQ(h.changes, 18);
    EXPECT_EQ(h.commits, 0);
}

TEST(OverlayTextField, ReturnCommitsAndEscapeCancels)
{
    FieldHarness h;
    QTest::keyClick(&h.field, Qt::Key_Return);
    QTest::keyClick(&h.field, Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(h.commits, 2);
    QTest::keyClick(&h.field, Qt::Key_Escape);
    EXPECT_EQ(h.cancels, 1);
}

TEST(OverlayTextField, StandsWhereTheEditorPutsIt)
{
    FieldHarness h;
    h.field.setFrame(QRectF(10.2, 20.7, 40, 24));
    EXPECT_EQ(h.field.geometry(), QRectF(10.2, 20.7, 40, 24).toAlignedRect());
}

TEST(OverlayTextField, TheBackgroundStyleShowsItsPlateWhileTyping)
{
    FieldHarness h;
    glimpso::TextOptions options;
    options.style = glimpso::TextStyle::background;
    const QColor red(255, 59, 48);
    h.field.setLook(options, red);
    EXPECT_EQ(h.field.palette().color(QPalette::Base), red);
    EXPECT_EQ(h.field.palette().color(QPalette::Text), glimpso::TextLook::contrast(red));
    EXPECT_EQ(h.field.font(), OverlayTextField::typingFont(options, h.field.logicalDpiY()));

    options.style = glimpso::TextStyle::plain;
    h.field.setLook(options, red);
    EXPECT_EQ(h.field.palette().color(QPalette::Base).alpha(), 0);
    EXPECT_EQ(h.field.palette().color(QPalette::Text), red);
}

TEST(OverlayTextField, TypedLettersTakeTheRoomOfTheCommittedText)
{
    FieldHarness h;
    glimpso::TextOptions options;
    options.size = 23.5;
    h.field.setLook(options, Qt::red);
    const QString sample = QStringLiteral("Hello, glimpso 123");
    // As wide on this window as the look measures it, whatever the window's dots per inch.
    const QFontMetricsF typed(h.field.font(), &h.field);
    const QSizeF committed = glimpso::TextLook::measure(sample, glimpso::TextLook::font(options));
    EXPECT_NEAR(typed.horizontalAdvance(sample), committed.width(), committed.width() * 0.03);
    EXPECT_NEAR(typed.ascent() + typed.descent(), committed.height(), 1.5);
}
