#pragma once

#include <QColor>
#include <QWidget>

// A thin upright line between groups of chips, in the icon colour at a
// quarter strength.
class ToolbarSeparator : public QWidget
{
    Q_OBJECT

public:
    explicit ToolbarSeparator(QWidget *parent = nullptr);

    void setTint(const QColor &tint);
    QColor color() const { return m_colour; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_colour;
};
