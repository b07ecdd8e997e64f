#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QString>

// The application's icons: shapes of the public Lucide set, drawn as template
// images (black with alpha) at any size and stroke width, tinted where used.
class Lucide
{
public:
    enum Icon {
        mousePointer, pencil, highlighter, line, arrowUpRight, square, circle, type, counter, mosaic,
        undo, redo, copy, cloudUpload, save, x, chevronDown, smile, minus, plus, scan, scanText,
        appWindow, messageWarning, history, film, video, stopSquare, monitor, timer, squarePen,
        folderOpen, settings, refresh, power,
    };
    static constexpr int iconCount = power + 1;

    Lucide(Icon icon) : m_icon(icon) {}

    Icon icon() const { return m_icon; }
    // The case's name, which is also its key in the image cache.
    QString rawValue() const;
    // The icon of the Lucide set that stands for this case.
    QString setName() const;

    // The template image: black strokes on transparency, `size` points square
    // at `devicePixelRatio`. Cached by name, size and stroke; a shape that
    // cannot be drawn gives an empty (transparent) image of that size.
    QImage image(qreal size, qreal stroke, qreal devicePixelRatio = 1.0) const;
    // The template image filled with `tint`.
    QImage tinted(qreal size, qreal stroke, const QColor &tint, qreal devicePixelRatio = 1.0) const;
    // An icon for menus and buttons, sharp at 1x and 2x.
    QIcon icon(qreal size, qreal stroke, const QColor &tint) const;

    // The SVG document the design draws: the shape's elements in a 24-unit
    // view box, no fill, black round-capped strokes of `stroke` width.
    static QByteArray svgDocument(const QByteArray &elements, qreal size, qreal stroke);
    // The drawable elements of a Lucide SVG file: everything inside <svg>.
    static QByteArray elementsOf(const QByteArray &svgFile);
    // Any SVG document drawn anti-aliased into a clear image of `size` points
    // at `devicePixelRatio`; clear when the document can't be read.
    static QImage render(const QByteArray &svgDocument, qreal size, qreal devicePixelRatio);

private:
    QByteArray elements() const;

    Icon m_icon;
};
