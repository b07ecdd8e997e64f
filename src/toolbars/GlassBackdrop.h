#pragma once

#include <QColor>
#include <QWidget>

// The translucent ground of a "glass" toolbar: the appearance's window tone
// over whatever lies beneath, with a hairline edge, at the toolbar's radius.
class GlassBackdrop : public QWidget
{
    Q_OBJECT

public:
    explicit GlassBackdrop(QWidget *parent = nullptr);

    void setLook(const QColor &tint, qreal cornerRadius);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_tint;
    qreal m_radius = 10;
};
