#include "annotation/AnnotationHistory.h"

#include <gtest/gtest.h>

using namespace glimpso;

namespace {

const QColor red(255, 59, 48);
const Annotation a = Annotation::rect({0, 0, 10, 10}, red, 3);
const Annotation b = Annotation::ellipse({5, 5, 10, 10}, red, 3);
const Annotation c = Annotation::sequence(1, {3, 3}, red, 14);

} // namespace

TEST(AnnotationHistory, AddingAppendsAndEmptiesTheRedoStack)
{
    const AnnotationHistory start{{a}, {b}};
    const AnnotationHistory next = start.adding(c);
    EXPECT_EQ(next.annotations, (QList<Annotation>{a, c}));
    EXPECT_TRUE(next.redoStack.isEmpty());
    EXPECT_EQ(start.annotations, QList<Annotation>{a}); // the old value is untouched
}

TEST(AnnotationHistory, UndoMovesTheLastMarkToTheRedoStack)
{
    const AnnotationHistory next = AnnotationHistory{{a, b}, {c}}.undoing();
    EXPECT_EQ(next.annotations, QList<Annotation>{a});
    EXPECT_EQ(next.redoStack, (QList<Annotation>{c, b}));
}

TEST(AnnotationHistory, UndoOfAnEmptyListChangesNothing)
{
    const AnnotationHistory start{{}, {c}};
    EXPECT_EQ(start.undoing(), start);
}

TEST(AnnotationHistory, RedoBringsBackTheMostRecentlyTaken)
{
    const AnnotationHistory next = AnnotationHistory{{a}, {c, b}}.redoing();
    EXPECT_EQ(next.annotations, (QList<Annotation>{a, b}));
    EXPECT_EQ(next.redoStack, QList<Annotation>{c});
    const AnnotationHistory empty{{a}, {}};
    EXPECT_EQ(empty.redoing(), empty);
}

TEST(AnnotationHistory, DeletingPutsTheMarkWhereRedoBringsItBackOnTop)
{
    const AnnotationHistory deleted = AnnotationHistory{{a, b, c}, {}}.deleting(0);
    EXPECT_EQ(deleted.annotations, (QList<Annotation>{b, c}));
    EXPECT_EQ(deleted.redoing().annotations, (QList<Annotation>{b, c, a}));
}

TEST(AnnotationHistory, OutOfRangeIndicesChangeNothing)
{
    const AnnotationHistory start{{a}, {b}};
    EXPECT_EQ(start.deleting(1), start);
    EXPECT_EQ(start.deleting(-1), start);
    EXPECT_EQ(start.replacing(3, c), start);
}

TEST(AnnotationHistory, ReplacingKeepsTheRedoStack)
{
    const AnnotationHistory next = AnnotationHistory{{a, b}, {c}}.replacing(0, b);
    EXPECT_EQ(next.annotations, (QList<Annotation>{b, b}));
    EXPECT_EQ(next.redoStack, QList<Annotation>{c});
}
