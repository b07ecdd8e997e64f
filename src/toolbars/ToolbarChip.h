#pragma once

#include "appui/Lucide.h"

#include <QColor>
#include <QWidget>

#include <functional>

// A square toolbar button with one icon. Off the accent style it lights in its
// tint (selected darker than hovered); in the accent style the selected chip
// fills with the accent colour and its icon turns white.
class ToolbarChip : public QWidget
{
    Q_OBJECT

public:
    struct Metrics {
        qreal chip;
        qreal icon;
        qreal radius;
        qreal selectionInset;

        static Metrics floating() { return {28, 18, 8, 0}; }
        static Metrics header() { return {28, 16, 7, 3}; }
    };

    ToolbarChip(Lucide icon, const QString &tip, Metrics metrics, bool accentSelection, QWidget *parent = nullptr);

    std::function<void()> onClick;

    void setTint(const QColor &tint);
    QColor tint() const { return m_tint; }
    void setHighlighted(bool highlighted);
    bool highlighted() const { return m_highlighted; }
    bool hovering() const { return m_hovering; }
    Lucide lucide() const { return m_icon; }

    // What the chip paints in its present state: the background (transparent
    // when clear) and the icon's colour.
    QColor backgroundColor() const;
    QColor iconColor() const;
    // The rectangle the background fills, in the chip's coordinates.
    QRectF backgroundRect() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    Lucide m_icon;
    Metrics m_metrics;
    bool m_accentSelection;
    QColor m_tint = Qt::black;
    bool m_highlighted = false;
    bool m_hovering = false;
};
