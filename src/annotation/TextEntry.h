#pragma once

#include "annotation/TextHost.h"
#include "annotation/TextOptions.h"

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QString>

namespace glimpso {

class TextEntryField;
class TextEntryHost;

// The one text field an editor may have open: where the text's box starts,
// and where the field stands over it so that the typed letters sit exactly
// where the committed text will draw them. The editor decides when to open,
// restyle and close it; this keeps the field's geometry.
class TextEntry {
public:
    static constexpr double minimumWidth = 40;

    // Opens a field in `host` for a text box that starts at p and is centred
    // on it vertically. False (and nothing open) when the host gives no field.
    bool open(const TextHost &host, QPointF p, const TextOptions &options);
    bool isOpen() const { return m_field != nullptr; }
    QString text() const;
    // The top-left corner of the text's box, in the editor's coordinates.
    QPointF origin() const { return m_origin; }

    // The look of the options in `color`, then the frame and width to match.
    void style(const TextOptions &options, const QColor &color, const QRectF &canvas);
    // Grows or shrinks the field to its text: at least 40 wide, and never past
    // the canvas's right edge (less 4), where a long text scrolls instead.
    void fit(const TextOptions &options, const QRectF &canvas);
    void moveBy(QPointF travel, const TextOptions &options);
    // Takes the field away; what was typed is dropped.
    void close();

    // The field's frame in the editor's coordinates for a box at `origin`:
    // the style's insets less the field's own 2-point text margin, one line high.
    static QRectF fieldFrame(QPointF origin, double width, const TextOptions &options);

private:
    void place(const TextOptions &options);

    TextEntryField *m_field = nullptr;
    TextEntryHost *m_host = nullptr;
    RectMap m_toLocal;
    QPointF m_origin;
    double m_width = minimumWidth;
};

} // namespace glimpso
