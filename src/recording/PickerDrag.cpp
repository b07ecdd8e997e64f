#include "recording/PickerDrag.h"

#include <algorithm>
#include <cmath>

void PickerDrag::press(QPointF point)
{
    m_start = point;
    m_current = point;
}

void PickerDrag::drag(QPointF point)
{
    if (m_start)
        m_current = point;
}

std::optional<QRectF> PickerDrag::release(QPointF point)
{
    if (!m_start)
        return std::nullopt;
    m_current = point;
    const QRectF chosen = *selection();
    m_start.reset();
    m_current.reset();
    if (chosen.width() >= minimumSide && chosen.height() >= minimumSide)
        return integral(chosen);
    return std::nullopt;
}

std::optional<QRectF> PickerDrag::selection() const
{
    if (!m_start || !m_current)
        return std::nullopt;
    return QRectF(*m_start, *m_current).normalized();
}

QString PickerDrag::sizeText(const QRectF &selection)
{
    return QStringLiteral("%1 × %2").arg(int(selection.width())).arg(int(selection.height()));
}

QRectF PickerDrag::sizePill(const QRectF &selection, const QSizeF &textSize)
{
    const QSizeF size(textSize.width() + 24, textSize.height() + 12);
    // y up: top() is the selection's lower edge.
    const double y = std::max(selection.top() - 30, 8.0);
    return {selection.right() - size.width(), y, size.width(), size.height()};
}

QRectF PickerDrag::hintPill(const QSizeF &bounds, const QSizeF &textSize)
{
    const QSizeF size(textSize.width() + 24, textSize.height() + 12);
    const double y = std::max(bounds.height() - 80, 8.0);
    return {(bounds.width() - size.width()) / 2, y, size.width(), size.height()};
}

QString PickerDrag::hintText(const QString &hint)
{
    return hint + QStringLiteral("   ·   Esc to cancel");
}

QRectF PickerDrag::integral(const QRectF &rect)
{
    const QRectF r = rect.normalized();
    const double left = std::floor(r.left());
    const double top = std::floor(r.top());
    return {left, top, std::ceil(r.right()) - left, std::ceil(r.bottom()) - top};
}
