#include "toolbars/AccentButton.h"

#include <QPainter>

namespace {

constexpr int buttonHeight = 32;
constexpr int margin = 16;

QFont titleFont(const QFont &base)
{
    QFont font = base;
    font.setPointSizeF(13 * 0.75);
    return font;
}

} // namespace

AccentButton::AccentButton(const QString &title, QWidget *parent) : QAbstractButton(parent)
{
    setText(title);
    setAccessibleName(title);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    setFixedSize(sizeHint());
}

QSize AccentButton::sizeHint() const
{
    const QFontMetrics metrics(titleFont(font()));
    return {metrics.horizontalAdvance(text()) + 2 * margin, buttonHeight};
}

void AccentButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = palette().color(QPalette::Highlight);
    if (isDown())
        fill = fill.darker(115);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(rect()), 10, 10);
    painter.setPen(Qt::white);
    painter.setFont(titleFont(font()));
    painter.drawText(rect(), Qt::AlignCenter, text());
}
