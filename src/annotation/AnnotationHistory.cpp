#include "annotation/AnnotationHistory.h"

namespace glimpso {

AnnotationHistory AnnotationHistory::adding(const Annotation &annotation) const
{
    AnnotationHistory next{annotations, {}};
    next.annotations.append(annotation);
    return next;
}

AnnotationHistory AnnotationHistory::undoing() const
{
    if (annotations.isEmpty())
        return *this;
    AnnotationHistory next = *this;
    next.redoStack.append(next.annotations.takeLast());
    return next;
}

AnnotationHistory AnnotationHistory::redoing() const
{
    if (redoStack.isEmpty())
        return *this;
    AnnotationHistory next = *this;
    next.annotations.append(next.redoStack.takeLast());
    return next;
}

AnnotationHistory AnnotationHistory::deleting(qsizetype index) const
{
    if (index < 0 || index >= annotations.size())
        return *this;
    AnnotationHistory next = *this;
    next.redoStack.append(next.annotations.takeAt(index));
    return next;
}

AnnotationHistory AnnotationHistory::replacing(qsizetype index, const Annotation &annotation) const
{
    if (index < 0 || index >= annotations.size())
        return *this;
    AnnotationHistory next = *this;
    next.annotations[index] = annotation;
    return next;
}

} // namespace glimpso
