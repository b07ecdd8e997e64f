#pragma once

#include <QColor>
#include <QSize>
#include <QWidget>

#include <functional>

class QLabel;

// The selection's size in physical pixels, width over height; a click opens
// the panel that sets an exact size.
class SizeChip : public QWidget
{
    Q_OBJECT

public:
    explicit SizeChip(QWidget *parent = nullptr);

    std::function<void()> onClick;

    void setPixels(const QSize &pixels);
    void setTint(const QColor &tint);
    void setHighlighted(bool highlighted);
    bool highlighted() const { return m_highlighted; }
    QString widthText() const;
    QString heightText() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    QLabel *m_width;
    QLabel *m_height;
    QColor m_tint = Qt::black;
    bool m_highlighted = false;
};
