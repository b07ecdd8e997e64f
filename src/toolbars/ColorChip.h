#pragma once

#include <QColor>
#include <QPointer>
#include <QWidget>

#include <functional>

class ColorPalette;

// The ink colour: a dot of the colour and a small chevron; a click opens the
// colour panel under it.
class ColorChip : public QWidget
{
    Q_OBJECT

public:
    explicit ColorChip(bool plain, QWidget *parent = nullptr);
    ~ColorChip() override;

    std::function<void(const QColor &)> onColorChange;

    // Shows `colour` without calling onColorChange.
    void setColor(const QColor &colour);
    QColor color() const { return m_colour; }
    void setTint(const QColor &tint);
    QColor tint() const { return m_tint; }

    void openPalette();
    // The panel while it is open; none otherwise.
    ColorPalette *palette() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    void picked(const QColor &colour);

    bool m_plain;
    QColor m_colour = Qt::red;
    QColor m_tint = Qt::black;
    QPointer<ColorPalette> m_palette;
};
