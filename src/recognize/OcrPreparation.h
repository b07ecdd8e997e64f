#pragma once

#include <QImage>
#include <QList>
#include <QRectF>

// Makes a picture of screen text into the picture the OCR engine reads best.
// Screen text is small (an x-height of 5 to 9 pixels), often light on dark,
// and cut tightly by a drag; the engine wants dark text on a light page, an
// x-height near 30 pixels and a margin around the text. Stateless.
namespace OcrPreparation {

// How the engine is to divide the picture.
enum class Layout {
    singleLine, // one line of text
    block,      // lines of one block, read top to bottom
};

struct Options {
    // The x-height the text is scaled to, in pixels: on the project's own
    // screen text, 22 read better than 18, 26, 30 or 40, and sooner than
    // the larger ones (docs/text.md).
    double targetXHeight = 22.0;
    // No picture is made larger than this many pixels, whatever the text.
    qint64 maxPixels = qint64(24) << 20;
};

struct Prepared {
    QImage gray;  // Format_Grayscale8: dark text on a light ground
    Layout layout = Layout::block;
    double scale = 1.0;      // how much the picture was enlarged
    bool inverted = false;   // the text was light on dark
    double xHeight = 0;      // the text's x-height as found, in source pixels; 0 without text
    int margin = 0;          // pixels of ground added on every side, after scaling

    // A rectangle of the prepared picture in the source picture's pixels.
    QRectF toSource(const QRectF &prepared) const;
};

// What is found in a grey picture about its text.
struct TextLines {
    int background = 255;     // the ground's grey level
    bool lightOnDark = false; // the ink is lighter than the ground
    // Each run of rows with ink, top and bottom inclusive.
    struct Line {
        int top = 0;
        int bottom = 0;
        int xHeight = 0;
    };
    QList<Line> lines;
    double xHeight() const; // the median x-height of the lines; 0 without lines
};

// Luma of each pixel (Rec. 601), alpha laid on white.
QImage luminance(const QImage &image);

// The ground is the most common grey; ink is what differs from it clearly.
TextLines findTextLines(const QImage &gray);

// Paints over, with the ground, the solid blocks that lie on their own in a
// line (a terminal's cursor): no letter fills its box, and the engine reads
// such a block into the letters above it. Returns how many it painted over.
int eraseSolidBlocks(QImage &gray, const TextLines &lines);

// Enlarges (or shrinks) a grey picture with a Catmull-Rom cubic, which keeps
// the edges of glyphs sharp without ringing into the ground.
QImage resample(const QImage &gray, int width, int height);

// The whole preparation: grey, dark on light, scaled, with a margin of
// ground around it.
Prepared prepare(const QImage &image, const Options &options = {});

} // namespace OcrPreparation
