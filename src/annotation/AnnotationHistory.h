#pragma once

#include "annotation/Annotation.h"

#include <QList>

namespace glimpso {

// The editor's list of marks and what undo took off its end. There is no
// record of edits: one undo step is one mark added, whatever it was, and
// changing a mark in place (move, resize, bend, colour, style) is not a step.
// Each operation returns the new value and leaves this one as it was.
struct AnnotationHistory {
    QList<Annotation> annotations; // draw order: later ones lie on top
    QList<Annotation> redoStack;   // the last one is the next to come back

    // Appends a new mark; what undo took away can't come back after that.
    AnnotationHistory adding(const Annotation &annotation) const;
    // Moves the last mark onto the redo stack; nothing when the list is empty.
    AnnotationHistory undoing() const;
    // Puts the most recently undone or deleted mark back on top.
    AnnotationHistory redoing() const;
    // Takes the mark at `index` out onto the redo stack, so redo brings it back
    // at the end of the list. An index out of range changes nothing.
    AnnotationHistory deleting(qsizetype index) const;
    // Changes one mark in place; the redo stack stays. Out of range: nothing.
    AnnotationHistory replacing(qsizetype index, const Annotation &annotation) const;

    bool operator==(const AnnotationHistory &) const = default;
};

} // namespace glimpso
