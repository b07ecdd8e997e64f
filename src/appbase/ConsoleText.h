#pragma once

#include <QString>

#include <cstdio>

// What a command prints: text in the locale's encoding, ending with one line
// feed; nothing at all for empty text.
namespace ConsoleText {
void print(FILE *stream, const QString &text);
}
