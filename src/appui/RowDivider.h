#pragma once

#include <QWidget>

// The hairline between the rows of a group: one device pixel thick at any
// display scale, in the theme's hairline colour, starting `inset` points in.
class RowDivider : public QWidget
{
    Q_OBJECT

public:
    explicit RowDivider(int inset = 0, QWidget *parent = nullptr);

    int inset() const { return m_inset; }

    // The line's thickness in points on a device of this scale.
    static qreal thickness(qreal devicePixelRatio) { return 1.0 / devicePixelRatio; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_inset;
};
