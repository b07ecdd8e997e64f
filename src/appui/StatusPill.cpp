#include "appui/StatusPill.h"

#include "appui/Theme.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace {

constexpr qreal horizontalPadding = 10;
constexpr qreal verticalPadding = 3;
constexpr qreal markSide = 10;
constexpr qreal dotSide = 7;
constexpr qreal leadGap = 5;

QFont pillFont()
{
    QFont font = Theme::caption();
    font.setWeight(QFont::Medium);
    return font;
}

void drawCheck(QPainter &painter, const QRectF &box, const QColor &ink)
{
    QPainterPath check;
    check.moveTo(box.left() + box.width() * 0.1, box.top() + box.height() * 0.55);
    check.lineTo(box.left() + box.width() * 0.4, box.top() + box.height() * 0.85);
    check.lineTo(box.left() + box.width() * 0.95, box.top() + box.height() * 0.2);
    QPen pen(ink, 1.8);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    painter.strokePath(check, pen);
}

} // namespace

StatusPill::StatusPill(const QString &text, Kind kind, QWidget *parent)
    : QWidget(parent)
    , m_text(text)
    , m_kind(kind)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void StatusPill::setText(const QString &text)
{
    m_text = text;
    changed();
}

void StatusPill::setKind(Kind kind)
{
    m_kind = kind;
    changed();
}

void StatusPill::setShowCheck(bool show)
{
    m_showCheck = show;
    changed();
}

void StatusPill::setDot(std::optional<QColor> dot)
{
    m_dot = dot;
    changed();
}

void StatusPill::changed()
{
    updateGeometry();
    update();
}

QColor StatusPill::fillColor() const
{
    return Theme::color(m_kind == Kind::success ? Theme::Color::successTint : Theme::Color::control);
}

QColor StatusPill::inkColor() const
{
    return Theme::color(m_kind == Kind::success ? Theme::Color::successInk : Theme::Color::inkSecondary);
}

qreal StatusPill::leadWidth() const
{
    if (m_showCheck)
        return markSide + leadGap;
    if (m_dot)
        return dotSide + leadGap;
    return 0;
}

QSize StatusPill::sizeHint() const
{
    const QFontMetricsF metrics(pillFont());
    const qreal width = horizontalPadding * 2 + leadWidth() + metrics.horizontalAdvance(m_text);
    const qreal height = std::max(metrics.height(), markSide) + verticalPadding * 2;
    return {int(std::ceil(width)), int(std::ceil(height))};
}

void StatusPill::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds = rect();
    painter.setPen(Qt::NoPen);
    painter.setBrush(fillColor());
    painter.drawRoundedRect(bounds, bounds.height() / 2, bounds.height() / 2);

    qreal x = horizontalPadding;
    const qreal middle = bounds.center().y();
    if (m_showCheck) {
        drawCheck(painter, QRectF(x, middle - markSide / 2, markSide, markSide), inkColor());
        x += markSide + leadGap;
    } else if (m_dot) {
        painter.setBrush(*m_dot);
        painter.drawEllipse(QRectF(x, middle - dotSide / 2, dotSide, dotSide));
        x += dotSide + leadGap;
    }
    painter.setFont(pillFont());
    painter.setPen(inkColor());
    painter.drawText(QRectF(x, 0, bounds.width() - x, bounds.height()), Qt::AlignVCenter | Qt::AlignLeft, m_text);
}
