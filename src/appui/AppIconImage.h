#pragma once

#include <QImage>
#include <QWidget>

// glimpso's own icon, drawn from the same SVG the desktop installs, at `size`
// points: the mark beside the application's name in its windows.
class AppIconImage : public QWidget
{
    Q_OBJECT

public:
    explicit AppIconImage(int size = 32, QWidget *parent = nullptr);

    int iconSize() const { return m_size; }

    // The icon at `size` points and the device pixel ratio given; an empty
    // transparent image of that size if the icon cannot be drawn.
    static QImage image(int size, qreal devicePixelRatio = 1.0);
    // Where the icon's SVG is kept in the application's resources.
    static QString resourcePath();

    QSize sizeHint() const override { return {m_size, m_size}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_size;
};
