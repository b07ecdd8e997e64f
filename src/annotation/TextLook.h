#pragma once

#include "annotation/TextOptions.h"

#include <QColor>
#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

class QPainter;

// The one definition of how an annotation's text looks: what is typed, what
// is shown live and what is saved all come from here, so they stay the same.
//
// Sizes are in the units of whatever painter draws the text (points of the
// annotation space), whatever the device's resolution: fonts are sized on a
// 72-dpi reference so that a size of 20 is 20 units tall on any device.
namespace glimpso::TextLook {

// The family that stands in for a font choice: the first installed of its
// candidates, else the desktop's own font.
QString familyFor(const TextFont &font);

// The semibold face of the options' font at the options' size.
QFont font(const TextOptions &options);

// The bold desktop font of the sequence bubbles' numbers.
QFont numberFont(double size);

// Space between the box's edge and the letters, per side, for a style.
QPointF insets(const TextOptions &options);

// The measured single line of text (no wrapping); zero for an empty string.
QSizeF measure(const QString &string, const QFont &font);

// The box a text annotation occupies: the measured string plus the style's
// insets on every side, each side rounded up to a whole unit.
QSizeF boxSize(const QString &string, const TextOptions &options);

// Black for light colours, white for dark ones (luma above 0.7 is light).
QColor contrast(const QColor &color);

// Draws the text box into `rect` (y down): plain letters, letters with a halo
// of the contrast colour outside them, or contrast letters on a rounded plate.
void draw(QPainter &painter, const QString &string, const TextOptions &options, const QColor &color,
          const QRectF &rect);

// Draws one line of text in `font` with its measured box centred on `center`.
void drawCentered(QPainter &painter, const QString &string, const QFont &font, const QColor &color,
                  QPointF center);

} // namespace glimpso::TextLook
