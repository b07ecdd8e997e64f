#include "overlay/TextEditBox.h"

#include "EventLoopWait.h"
#include "ViewHarness.h"
#include "annotation/Handle.h"
#include "annotation/TextLook.h"
#include "overlay/EmojiPicker.h"
#include "overlay/OverlayTextField.h"
#include "overlay/SelectionCanvas.h"
#include "overlay/SelectorView.h"
#include "settings/AppSettings.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QInputMethodEvent>
#include <QMouseEvent>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

using glimpso::Annotation;
using glimpso::Tool;

// ---- geometry ----

TEST(TextEditBox, TheBoxSurroundsTheFieldWithRoomAboveForTheButton)
{
    const QRectF field(100, 50, 40, 24);
    EXPECT_EQ(TextEditBox::boxFrame(field), QRectF(88, 12, 64, 74));
    const QSizeF box(64, 74);
    // The frame line: the field's frame grown by 6 and 3.
    EXPECT_EQ(TextEditBox::textFrame(box), QRectF(6, 35, 52, 30));
    // Centred on the frame, its bottom 8 above the frame's top.
    EXPECT_EQ(TextEditBox::emojiButton(box), QRectF(20, 3, 24, 24));
    EXPECT_EQ(TextEditBox::resizeSquare(box), QRectF(54, 61, 8, 8));
    EXPECT_EQ(TextEditBox::sideGrips(box)[0], QPointF(6, 50));
    EXPECT_EQ(TextEditBox::sideGrips(box)[1], QPointF(58, 50));
}

TEST(TextEditBox, APressFindsItsPartInOrderAndNothingInsideTheFrame)
{
    using Part = TextEditBox::Part;
    const QSizeF box(64, 74);
    EXPECT_EQ(TextEditBox::partAt({32, 15}, box), Part::emoji);
    // The corner lies on the frame line too: the square wins.
    EXPECT_EQ(TextEditBox::partAt({58, 65}, box), Part::resize);
    EXPECT_EQ(TextEditBox::partAt({6, 50}, box), Part::move);
    EXPECT_EQ(TextEditBox::partAt({6 + 9.5, 50}, box), Part::move);
    EXPECT_EQ(TextEditBox::partAt({32, 35}, box), Part::move);
    EXPECT_EQ(TextEditBox::partAt({32, 50}, box), std::nullopt);
    EXPECT_EQ(TextEditBox::partAt({1, 70}, box), std::nullopt);
    EXPECT_EQ(TextEditBox::partAt({6 + 9.6, 50}, box), std::nullopt);
}

// ---- on the overlay ----

namespace {

// An 800×500 display with the whole of it selected and the text tool chosen.
struct Overlay : ViewHarness {
    Overlay() : ViewHarness(snapshot(), QStringLiteral("#3478F6"))
    {
        view.show();
        canvas.mouseDown({0, 0});
        canvas.mouseUp({800, 500});
        canvas.handleToolbarAction(EditorAction::selectTool(Tool::text));
    }
    static ScreenSnapshot snapshot()
    {
        QImage image(800, 500, QImage::Format_RGB32);
        image.fill(QColor(128, 128, 128));
        return {1, image, QRectF(0, 0, 800, 500), 1.0};
    }
    // Opens a field with a press at the global point.
    OverlayTextField *openAt(QPointF global)
    {
        canvas.mouseDown(global);
        canvas.mouseUp(global);
        return field();
    }
    // Sets the text size as the toolbar would.
    void setTextSize(double size)
    {
        glimpso::TextOptions options = editor().textOptions();
        options.size = size;
        canvas.handleToolbarAction(EditorAction::setTextOptions(options));
    }
    OverlayTextField *field() const
    {
        for (OverlayTextField *field : view.findChildren<OverlayTextField *>()) {
            if (field->isVisible())
                return field;
        }
        return nullptr;
    }
    // A press, moves and a release on `widget`, at points of the view.
    void drag(QWidget *widget, QPointF from, QPointF to, int steps = 3)
    {
        const auto send = [&](QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons held) {
            const QPointF local = widget->mapFrom(&view, at.toPoint()) + (at - at.toPoint());
            QMouseEvent event(type, local, view.mapToGlobal(at), button, held, Qt::NoModifier);
            QApplication::sendEvent(widget, &event);
        };
        send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
        for (int i = 1; i <= steps; ++i)
            send(QEvent::MouseMove, from + (to - from) * i / steps, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
    }
    glimpso::AnnotationEditor &editor() { return canvas.editor(); }
};

QPointF centreOf(const QRectF &rect, const QWidget *in, const QWidget *view)
{
    return in->mapTo(view, rect.center().toPoint());
}

} // namespace

TEST(TextEditBox, FramesTheFieldAndGrowsWithTheText)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    TextEditBox *box = field->box();
    ASSERT_TRUE(box && box->isVisible());
    EXPECT_EQ(QRectF(box->geometry()), TextEditBox::boxFrame(QRectF(field->geometry())));
    const int narrow = box->width();
    QTest::keyClicks(field, QStringLiteral("Hello, glimpso 123"));
    EXPECT_GT(field->width(), 40);
    EXPECT_EQ(box->width(), field->width() + 24);
    EXPECT_GT(box->width(), narrow);
}

TEST(TextEditBox, ClicksInsideTheFrameReachTheFieldAndBesideItsPartsTheOverlay)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    TextEditBox *box = field->box();
    const QRect frame = box->geometry();
    EXPECT_EQ(o.view.childAt(field->geometry().center()), field);
    // On the frame line: the box.
    const QPointF top = TextEditBox::textFrame(box->size()).topLeft() + QPointF(20, 0);
    EXPECT_EQ(o.view.childAt(box->mapTo(&o.view, top.toPoint())), box);
    // The box's own corner is none of its parts: the click goes to the overlay.
    EXPECT_EQ(o.view.childAt(frame.topLeft() + QPoint(1, 1)), nullptr);
}

TEST(TextEditBox, TheFrameLineMovesTheTextAndAClickOnTheTextPlacesTheCaret)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    QTest::keyClicks(field, QStringLiteral("Hello"));
    const QRect fieldBefore = field->geometry();
    TextEditBox *box = field->box();
    const QPointF grip = box->mapTo(&o.view, TextEditBox::sideGrips(box->size())[0].toPoint());
    o.drag(box, grip, grip + QPointF(20, 10));
    EXPECT_EQ(field->geometry(), fieldBefore.translated(20, 10));
    EXPECT_EQ(box->geometry(), TextEditBox::boxFrame(QRectF(field->geometry())).toAlignedRect());

    // A click at the start of the text puts the caret there and keeps the field open.
    EXPECT_EQ(field->cursorPosition(), 5);
    QTest::mouseClick(field, Qt::LeftButton, Qt::NoModifier, QPoint(1, field->height() / 2));
    EXPECT_EQ(field->cursorPosition(), 0);
    EXPECT_TRUE(o.editor().hasTextField());
    EXPECT_TRUE(o.editor().annotations().isEmpty());

    // Committed where it was moved: 20 right and 10 down on the screen is 10 up in global points.
    const QPointF origin = QPointF(100, 120 + glimpso::TextLook::boxSize("Ag", o.editor().textOptions()).height() / 2);
    QTest::keyClick(field, Qt::Key_Return);
    ASSERT_EQ(o.editor().annotations().size(), 1);
    const auto *text = o.editor().annotations()[0].as<Annotation::Text>();
    EXPECT_EQ(text->string, QStringLiteral("Hello"));
    EXPECT_EQ(text->origin, origin + QPointF(20, -10));
}

TEST(TextEditBox, AResizeDrag30RightAnd30DownOnTheCornerAdds20)
{
    Overlay o;
    o.setTextSize(20);
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    TextEditBox *box = field->box();
    const QPointF corner = centreOf(TextEditBox::resizeSquare(box->size()), box, &o.view);
    o.drag(box, corner, corner + QPointF(30, 30));
    EXPECT_EQ(o.editor().textOptions().size, 40);
    EXPECT_EQ(field->font(), OverlayTextField::typingFont(o.editor().textOptions(), field->logicalDpiY()));
    // The frame follows the taller field.
    EXPECT_EQ(box->geometry(), TextEditBox::boxFrame(QRectF(field->geometry())).toAlignedRect());
    EXPECT_EQ(o.view.layers().hudText(), QStringLiteral("Text 40pt"));
    EXPECT_TRUE(o.view.layers().hudVisible());
}

TEST(TextEditBox, TheWheelOverTheFieldSizesTheText)
{
    Overlay o;
    o.setTextSize(20);
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    const QPointF at(10, field->height() / 2.0);
    QWheelEvent wheel(at, field->mapToGlobal(at), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(field, &wheel);
    EXPECT_EQ(o.editor().textOptions().size, 21);
    EXPECT_EQ(field->font(), OverlayTextField::typingFont(o.editor().textOptions(), field->logicalDpiY()));
}

TEST(TextEditBox, EscapeDropsTheTextAndTheFrameAndKeepsTheCapture)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    QPointer<TextEditBox> box = field->box();
    QTest::keyClicks(field, QStringLiteral("gone"));
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_FALSE(o.editor().hasTextField());
    EXPECT_TRUE(o.editor().annotations().isEmpty());
    EXPECT_TRUE(o.results.isEmpty());
    EXPECT_TRUE(!box || !box->isVisible());
    // Let go once the event loop has its turn.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(box);
}

TEST(TextEditBox, AnotherToolOrAnOutputCommitsTheTextFirst)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    QTest::keyClicks(field, QStringLiteral("first"));
    o.canvas.handleToolbarAction(EditorAction::selectTool(Tool::rect));
    ASSERT_EQ(o.editor().annotations().size(), 1);
    EXPECT_FALSE(o.editor().hasTextField());

    o.canvas.handleToolbarAction(EditorAction::selectTool(Tool::text));
    field = o.openAt({100, 60});
    ASSERT_TRUE(field);
    QTest::keyClicks(field, QStringLiteral("second"));
    o.canvas.handleToolbarAction(EditorAction::copy());
    ASSERT_EQ(o.results.size(), 1);
    const auto *selected = std::get_if<RegionResult::Selected>(&o.results[0].value);
    ASSERT_TRUE(selected);
    ASSERT_EQ(selected->annotations.size(), 2);
    const auto *text = selected->annotations.last().as<Annotation::Text>();
    ASSERT_TRUE(text);
    EXPECT_EQ(text->string, QStringLiteral("second"));
}

TEST(TextEditBox, AClickElsewhereCommitsAndReturnWithoutTextAddsNothing)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(o.editor().annotations().isEmpty());
    EXPECT_TRUE(o.editor().redoStack().isEmpty());

    field = o.openAt({100, 120});
    QTest::keyClicks(field, QStringLiteral("kept"));
    o.openAt({300, 40});
    ASSERT_EQ(o.editor().annotations().size(), 1);
    EXPECT_TRUE(o.editor().hasTextField());
}

TEST(TextEditBox, InTheBackgroundStyleThePlateShowsWhileTyping)
{
    Overlay o;
    glimpso::TextOptions options = o.editor().textOptions();
    options.style = glimpso::TextStyle::background;
    o.canvas.handleToolbarAction(EditorAction::setTextOptions(options));
    o.canvas.handleToolbarAction(EditorAction::selectColor(QColor(20, 200, 90)));
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    QTest::keyClicks(field, QStringLiteral("plate"));
    const QImage shown = o.view.grab().toImage();
    // Between the letters' baseline and the field's bottom: the plate's colour, not the grey screen.
    const QPoint inside = field->geometry().bottomLeft() + QPoint(2, -1);
    EXPECT_EQ(QColor(shown.pixel(inside)), QColor(20, 200, 90));
}

TEST(TextEditBox, TheEmojiButtonOpensAGridWhosePickTypesAtTheCaret)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    QTest::keyClicks(field, QStringLiteral("ab"));
    field->setCursorPosition(1);
    TextEditBox *box = field->box();
    const QPointF button = centreOf(TextEditBox::emojiButton(box->size()), box, &o.view);
    o.drag(box, button, button, 0);
    EmojiPicker *picker = field->emojiPicker();
    ASSERT_TRUE(picker);
    EXPECT_TRUE(picker->isVisible());
    EXPECT_EQ(picker->buttons().size(), EmojiPicker::emoji().size());
    // The grid stays on the display and off the field.
    EXPECT_TRUE(o.view.rect().contains(picker->geometry()));
    EXPECT_FALSE(picker->geometry().intersects(field->geometry()));
    // A pick is typed at the caret and doesn't end the text.
    QTest::mouseClick(picker->buttons().first(), Qt::LeftButton);
    EXPECT_EQ(field->text(), QStringLiteral("a") + EmojiPicker::emoji().first() + QStringLiteral("b"));
    EXPECT_FALSE(picker->isVisible());
    EXPECT_TRUE(o.editor().hasTextField());
    EXPECT_EQ(picker->buttons().first()->focusPolicy(), Qt::NoFocus);
}

TEST(TextEditBox, InputMethodsComposeAndCommitNonLatinText)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    const int empty = field->width();
    QInputMethodEvent composing(QStringLiteral("にほんごにほんご"), {});
    QApplication::sendEvent(field, &composing);
    EXPECT_TRUE(field->text().isEmpty());
    EXPECT_EQ(field->shownText(), QStringLiteral("にほんごにほんご"));
    // The field makes room for what is being composed.
    EXPECT_GT(field->width(), empty);

    QInputMethodEvent done;
    done.setCommitString(QStringLiteral("日本語"));
    QApplication::sendEvent(field, &done);
    EXPECT_EQ(field->text(), QStringLiteral("日本語"));
    EXPECT_EQ(field->shownText(), QStringLiteral("日本語"));
    QTest::keyClick(field, Qt::Key_Return);
    ASSERT_EQ(o.editor().annotations().size(), 1);
    EXPECT_EQ(o.editor().annotations()[0].as<Annotation::Text>()->string, QStringLiteral("日本語"));
}

namespace {

// The bounds of the pixels of `image` within `area` that are near `color`.
QRect inkBounds(const QImage &image, const QRect &area, const QColor &color)
{
    QRect bounds;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (std::abs(c.red() - color.red()) + std::abs(c.green() - color.green()) + std::abs(c.blue() - color.blue())
                < 60)
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds;
}

} // namespace

TEST(TextEditBox, TypedLettersStandWhereTheCommittedTextIsDrawn)
{
    Overlay o;
    glimpso::TextOptions options = o.editor().textOptions();
    options.style = glimpso::TextStyle::plain;
    options.size = 30;
    o.canvas.handleToolbarAction(EditorAction::setTextOptions(options));
    const QColor red(255, 59, 48);
    o.canvas.handleToolbarAction(EditorAction::selectColor(red));
    OverlayTextField *field = o.openAt({200, 300});
    ASSERT_TRUE(field);
    QTest::keyClicks(field, QStringLiteral("Hello, glimpso 123"));
    const QRect area = field->geometry().adjusted(-4, -4, 4, 4);
    const QRect typed = inkBounds(o.view.grab().toImage(), area, red);
    QTest::keyClick(field, Qt::Key_Return);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_EQ(o.editor().annotations().size(), 1);
    const QRect committed = inkBounds(o.view.grab().toImage(), area, red);
    ASSERT_TRUE(typed.isValid() && committed.isValid());
    EXPECT_GT(typed.width(), 200);
    EXPECT_LE(std::abs(typed.left() - committed.left()), 1);
    EXPECT_LE(std::abs(typed.top() - committed.top()), 1);
    EXPECT_LE(std::abs(typed.right() - committed.right()), 2);
    EXPECT_LE(std::abs(typed.bottom() - committed.bottom()), 1);
}

TEST(TextEditBox, EachPartShowsItsPointerAndTheFrameLineNone)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    TextEditBox *box = field->box();
    const QSizeF size = box->size();
    const auto hover = [&](QPointF at) {
        QMouseEvent move(QEvent::MouseMove, at, box->mapToGlobal(at), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(box, &move);
    };
    hover(TextEditBox::resizeSquare(size).center());
    EXPECT_EQ(box->cursor().shape(), glimpso::cursor(glimpso::Handle::bottomRight));
    hover(TextEditBox::sideGrips(size)[1]);
    EXPECT_EQ(box->cursor().shape(), Qt::OpenHandCursor);
    hover(TextEditBox::emojiButton(size).center());
    EXPECT_EQ(box->cursor().shape(), Qt::PointingHandCursor);
    hover(TextEditBox::textFrame(size).topLeft() + QPointF(30, 0));
    EXPECT_FALSE(box->testAttribute(Qt::WA_SetCursor));
}

TEST(TextEditBox, AMoveDragHoldsTheClosedHandUntilRelease)
{
    Overlay o;
    OverlayTextField *field = o.openAt({100, 120});
    ASSERT_TRUE(field);
    TextEditBox *box = field->box();
    const QPointF grip = TextEditBox::sideGrips(box->size())[0];
    QMouseEvent press(QEvent::MouseButtonPress, grip, box->mapToGlobal(grip), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(box, &press);
    EXPECT_EQ(box->dragging(), TextEditBox::Part::move);
    EXPECT_EQ(box->cursor().shape(), Qt::ClosedHandCursor);
    QMouseEvent release(QEvent::MouseButtonRelease, grip, box->mapToGlobal(grip), Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(box, &release);
    EXPECT_EQ(box->dragging(), std::nullopt);
    EXPECT_EQ(box->cursor().shape(), Qt::OpenHandCursor);
}
