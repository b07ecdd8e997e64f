#pragma once

#include <QWidget>

// The 3-2-1 before a recording starts: a dark disc of 120 points centred on
// the area, with the number in white.
class CountdownPanel : public QWidget
{
public:
    static constexpr int side = 120;

    CountdownPanel(bool translucent, QWidget *parent = nullptr);

    void showCount(const QRectF &area, int n);
    int count() const { return m_count; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_translucent;
    int m_count = 0;
};
