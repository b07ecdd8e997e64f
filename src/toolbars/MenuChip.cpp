#include "toolbars/MenuChip.h"

#include "appui/Lucide.h"
#include "toolbars/ChipPaint.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>

MenuChip::MenuChip(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::ArrowCursor);
    auto *stack = new QHBoxLayout(this);
    stack->setContentsMargins(6, 0, 5, 0);
    stack->setSpacing(3);
    m_label = new QLabel(this);
    QFont font = m_label->font();
    font.setPointSizeF(12.5 * 0.75);
    m_label->setFont(font);
    m_imageView = new QLabel(this);
    m_chevron = new QLabel(this);
    for (QLabel *part : {m_label, m_imageView, m_chevron})
        part->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_label->hide();
    m_imageView->hide();
    stack->addWidget(m_label);
    stack->addWidget(m_imageView);
    stack->addWidget(m_chevron);
    paintChevron();
}

void MenuChip::setTitle(const QString &title)
{
    m_label->setText(title);
    m_label->setVisible(!title.isEmpty());
    m_label->setAccessibleName(title);
    adjustSize();
}

QString MenuChip::title() const
{
    return m_label->text();
}

void MenuChip::setImage(const QImage &image)
{
    m_imageView->setPixmap(QPixmap::fromImage(image));
    m_imageView->setVisible(!image.isNull());
    adjustSize();
}

void MenuChip::setTint(const QColor &tint)
{
    m_tint = tint;
    QPalette colours = m_label->palette();
    colours.setColor(QPalette::WindowText, tint);
    m_label->setPalette(colours);
    paintChevron();
    update();
}

void MenuChip::paintChevron()
{
    m_chevron->setPixmap(QPixmap::fromImage(Lucide(Lucide::chevronDown).tinted(10, 2.5, m_tint, devicePixelRatioF())));
}

void MenuChip::setOpen(bool open)
{
    m_open = open;
    if (!open)
        m_hovering = false;
    update();
}

void MenuChip::paintEvent(QPaintEvent *)
{
    if (!lit())
        return;
    QPainter painter(this);
    ChipPaint::fillRounded(painter, QRectF(rect()), ChipPaint::faded(m_tint, 0.12), 6);
}

void MenuChip::enterEvent(QEnterEvent *event)
{
    m_hovering = true;
    update();
    QWidget::enterEvent(event);
}

void MenuChip::leaveEvent(QEvent *event)
{
    m_hovering = false;
    update();
    QWidget::leaveEvent(event);
}

void MenuChip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    event->accept();
    if (onPress)
        onPress();
}
