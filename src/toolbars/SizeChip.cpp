#include "toolbars/SizeChip.h"

#include "toolbars/ChipPaint.h"

#include <QFontDatabase>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace {

QLabel *figureLabel(QWidget *parent)
{
    auto *label = new QLabel(QStringLiteral("0"), parent);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(9);
    font.setWeight(QFont::DemiBold);
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    return label;
}

} // namespace

SizeChip::SizeChip(QWidget *parent) : QWidget(parent)
{
    setFixedSize(44, 28);
    setFocusPolicy(Qt::NoFocus);
    const QString tip = tr("Selection size — click to set exact width × height");
    setToolTip(tip);
    setAccessibleName(tip);
    setCursor(Qt::ArrowCursor);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 2, 0, 2);
    layout->setSpacing(0);
    m_width = figureLabel(this);
    m_height = figureLabel(this);
    layout->addWidget(m_width);
    layout->addWidget(m_height);
}

void SizeChip::setPixels(const QSize &pixels)
{
    m_width->setText(QString::number(pixels.width()));
    m_height->setText(QString::number(pixels.height()));
}

QString SizeChip::widthText() const
{
    return m_width->text();
}

QString SizeChip::heightText() const
{
    return m_height->text();
}

void SizeChip::setTint(const QColor &tint)
{
    m_tint = tint;
    for (QLabel *label : {m_width, m_height}) {
        QPalette colours = label->palette();
        colours.setColor(QPalette::WindowText, tint);
        label->setPalette(colours);
    }
    update();
}

void SizeChip::setHighlighted(bool highlighted)
{
    m_highlighted = highlighted;
    update();
}

void SizeChip::paintEvent(QPaintEvent *)
{
    if (!m_highlighted)
        return;
    QPainter painter(this);
    ChipPaint::fillRounded(painter, QRectF(rect()), ChipPaint::faded(m_tint, 0.22), 8);
}

void SizeChip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    event->accept();
    if (onClick)
        onClick();
}
