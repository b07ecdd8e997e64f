#include "toolbars/ColorChip.h"

#include "appui/Lucide.h"
#include "toolbars/ChipPaint.h"
#include "toolbars/ColorPalette.h"

#include <QMouseEvent>
#include <QPainter>

ColorChip::ColorChip(bool plain, QWidget *parent) : QWidget(parent), m_plain(plain)
{
    setFixedSize(44, 28);
    setFocusPolicy(Qt::NoFocus);
    setToolTip(tr("Colour"));
    setAccessibleName(tr("Colour"));
    setCursor(Qt::ArrowCursor);
}

ColorChip::~ColorChip()
{
    delete m_palette;
}

void ColorChip::setColor(const QColor &colour)
{
    m_colour = colour;
    if (m_palette)
        m_palette->setCurrent(colour);
    update();
}

void ColorChip::setTint(const QColor &tint)
{
    m_tint = tint;
    update();
}

ColorPalette *ColorChip::palette() const
{
    return m_palette && m_palette->isOpen() ? m_palette.data() : nullptr;
}

void ColorChip::openPalette()
{
    if (!m_palette) {
        m_palette = new ColorPalette(window());
        m_palette->onPick = [this](const QColor &colour) { picked(colour); };
    }
    m_palette->setCurrent(m_colour);
    m_palette->showBelow(this);
    m_palette->logPlaces();
}

void ColorChip::picked(const QColor &colour)
{
    setColor(colour);
    if (onColorChange)
        onColorChange(colour);
}

void ColorChip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    event->accept();
    if (palette())
        m_palette->dismiss();
    else
        openPalette();
}

void ColorChip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!m_plain) {
        ChipPaint::fillRounded(painter, QRectF(rect()), ChipPaint::faded(m_tint, 0.12), 8);
    }
    painter.setPen(QPen(ChipPaint::faded(m_tint, 0.35), 1));
    painter.setBrush(m_colour);
    painter.drawEllipse(QRectF(7.5, 6.5, 15, 15));
    const QImage chevron = Lucide(Lucide::chevronDown).tinted(10, 2.5, ChipPaint::faded(m_tint, 0.8), devicePixelRatioF());
    painter.drawImage(QRectF(27, 9, 10, 10), chevron);
}
