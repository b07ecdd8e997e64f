#pragma once

#include <QColor>
#include <QImage>
#include <QWidget>

#include <functional>

class QLabel;

// A small control that opens a menu: a title or an image, and a chevron. It
// stays lit while its menu is open.
class MenuChip : public QWidget
{
    Q_OBJECT

public:
    explicit MenuChip(QWidget *parent = nullptr);

    std::function<void()> onPress;

    void setTitle(const QString &title);
    QString title() const;
    void setImage(const QImage &image);
    void setTint(const QColor &tint);
    void setOpen(bool open);
    bool isOpen() const { return m_open; }
    bool hovering() const { return m_hovering; }
    bool lit() const { return m_hovering || m_open; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    void paintChevron();

    QLabel *m_label;
    QLabel *m_imageView;
    QLabel *m_chevron;
    QColor m_tint = Qt::black;
    bool m_hovering = false;
    bool m_open = false;
};
