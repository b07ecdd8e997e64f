#pragma once

#include <QList>
#include <QRect>
#include <QWidget>

// The dashed red line around the area being recorded: a window 4 points
// larger than the area on every side, cut to the dashes themselves, so the
// screen shows through between them and nothing of it lies inside the area.
class RecordingBorder : public QWidget
{
public:
    static constexpr int margin = 4;

    RecordingBorder(bool translucent, QWidget *parent = nullptr);

    // Shows the border around `area` (global points).
    void showAround(const QRectF &area);

    // The dashes of a border window of `size`: a line 2 points wide, 1 point
    // inside the window's edge, 6 points on and 4 off, clockwise from the
    // top left corner. Each dash is one or two rectangles (at a corner).
    static QList<QRect> dashes(QSize size);

    static QColor colour();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_translucent;
};
