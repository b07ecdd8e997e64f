#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <optional>

// The rules of the live area picker, in the points of its view with y up
// (origin at the bottom left of the display): a drag from press to release
// chooses the area; one shorter than 16 points either way starts over, it
// does not cancel. Also where the two pills of the picker go.
class PickerDrag
{
public:
    static constexpr double minimumSide = 16;

    void press(QPointF point);
    void drag(QPointF point);
    // The area chosen, whole points; absent when the drag was too short, and
    // the picker waits for another.
    std::optional<QRectF> release(QPointF point);

    // The rectangle being dragged, if any.
    std::optional<QRectF> selection() const;
    bool isDragging() const { return m_start.has_value(); }

    // "{width} × {height}" of the selection in whole points.
    static QString sizeText(const QRectF &selection);
    // The size pill: the text plus 24 by 12, its right edge on the
    // selection's, its lower edge 30 under the selection's, at least 8 over
    // the display's bottom.
    static QRectF sizePill(const QRectF &selection, const QSizeF &textSize);
    // The hint pill: centred, its lower edge 80 under the top of the view, at least 8 over its bottom.
    static QRectF hintPill(const QSizeF &bounds, const QSizeF &textSize);
    // The hint as shown: the caller's text, then "   ·   Esc to cancel".
    static QString hintText(const QString &hint);
    // The smallest rectangle of whole points holding `rect`.
    static QRectF integral(const QRectF &rect);

private:
    std::optional<QPointF> m_start;
    std::optional<QPointF> m_current;
};
