#pragma once

#include <QColor>
#include <QFont>
#include <QProxyStyle>

class QPushButton;

// What the primary and secondary button styles share: a push button drawn as
// a rounded fill with its text centred, at a fixed height, darker while
// pressed and faded while disabled. Colours are read at paint time, so a
// change of appearance needs only a repaint.
class FilledButtonStyle : public QProxyStyle
{
    Q_OBJECT

public:
    // Puts this style on `button`, which owns it from then on.
    void apply(QPushButton *button);

    qreal height() const { return m_height; }
    qreal fontSize() const { return m_fontSize; }
    QFont font() const;

    virtual QColor fill() const = 0;
    virtual QColor ink() const = 0;

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget = nullptr) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &contentsSize,
                           const QWidget *widget = nullptr) const override;

protected:
    // `fontSize` in points; 0 takes the theme's body size.
    FilledButtonStyle(qreal height, qreal fontSize, QFont::Weight weight);

private:
    qreal m_height;
    qreal m_fontSize;
    QFont::Weight m_weight;
};
