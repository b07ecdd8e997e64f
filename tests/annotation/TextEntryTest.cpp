#include "AnnotationFakes.h"

#include "annotation/TextEntry.h"
#include "annotation/TextLook.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace glimpso;

namespace {

// A host that has no room for a field.
struct FullHost : TextEntryHost {
    TextEntryField *openField(const QRectF &) override { return nullptr; }
    void closeField(TextEntryField *) override {}
};

const RectMap unchanged = [](const QRectF &r) { return r; };

} // namespace

TEST(TextEntry, FieldFrameTakesTheInsetsLessTheFieldsOwnMargin)
{
    const TextOptions plate{30, TextStyle::background, TextFont::system()};
    const double h = std::ceil(TextLook::measure(QStringLiteral("Ag"), TextLook::font(plate)).height());
    const QRectF frame = TextEntry::fieldFrame({100, 200}, 50, plate);
    EXPECT_DOUBLE_EQ(frame.left(), 100 + 0.35 * 30 - 2);
    EXPECT_DOUBLE_EQ(frame.top(), 200 - 0.14 * 30 - h);
    EXPECT_DOUBLE_EQ(frame.width(), 50);
    EXPECT_DOUBLE_EQ(frame.height(), h);
}

TEST(TextEntry, AHostWithoutAFieldOpensNothing)
{
    FullHost host;
    TextEntry entry;
    EXPECT_FALSE(entry.open(TextHost{&host, unchanged}, {10, 10}, {}));
    EXPECT_FALSE(entry.isOpen());
    EXPECT_FALSE(entry.open(TextHost{nullptr, unchanged}, {10, 10}, {}));
}

TEST(TextEntry, OpeningAgainClosesTheFirstField)
{
    FakeTextHost host;
    TextEntry entry;
    ASSERT_TRUE(entry.open(TextHost{&host, unchanged}, {10, 10}, {}));
    ASSERT_TRUE(entry.open(TextHost{&host, unchanged}, {50, 50}, {}));
    EXPECT_EQ(host.opened, 2);
    EXPECT_EQ(host.closed, 1);
    entry.close();
    EXPECT_EQ(host.closed, 2);
    EXPECT_FALSE(entry.isOpen());
    EXPECT_EQ(entry.text(), QString());
}

TEST(TextEntry, FitNeverGoesBelowFortyEvenAtTheCanvasEdge)
{
    FakeTextHost host;
    TextEntry entry;
    ASSERT_TRUE(entry.open(TextHost{&host, unchanged}, {390, 10}, {}));
    host.field->typed = QStringLiteral("a long line of text");
    entry.fit({}, QRectF(0, 0, 400, 300));
    EXPECT_EQ(host.field->frame.width(), 40);
}
