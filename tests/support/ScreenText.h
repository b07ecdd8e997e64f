#pragma once

#include <QImage>
#include <QList>
#include <QString>

#include <cstdint>

// Pictures of text as a screen shows it, each with the text it shows: UI
// sentences, menus, code in an editor, a terminal, single labels; in several
// faces, at 9 to 16 pixels, on light and dark themes, as a person would drag
// around it. The same seed always gives the same set. For the text
// recognition tests and the OCR benchmark.
namespace ScreenText {

struct Sample {
    QString name;  // "light-dialog-DejaVu Sans-12px", for reports
    QImage image;  // RGB32
    QString text;  // the lines shown, joined by line feeds
};

QList<Sample> makeSet(int count, std::uint32_t seed);

// The text as it is compared: every line trimmed, runs of white space made
// one space, empty lines dropped, lines joined by line feeds.
QString normalized(const QString &text);

// Edits (insertions, deletions, substitutions) that make `from` into `to`.
int editDistance(const QString &from, const QString &to);

// The character error rate over a set: the edits of all recognised texts to
// their expected ones over the expected characters, both normalised.
struct Score {
    qint64 edits = 0;
    qint64 characters = 0;
    double rate() const { return characters ? double(edits) / double(characters) : 0.0; }
    void add(const QString &expected, const QString &recognised);
};

} // namespace ScreenText
