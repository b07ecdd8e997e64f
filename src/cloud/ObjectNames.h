#pragma once

#include "appbase/CaptureKind.h"

#include <QString>
#include <QtGlobal>

#include <functional>

// How uploaded objects are named and typed. The name of an object has no
// relation to the local file's: ten random letters and digits, so that a link
// can't be guessed from another, and the file's extension.
namespace ObjectNames {

// The 62 characters a random name is made of.
inline constexpr char alphabet[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
inline constexpr int alphabetSize = 62;
inline constexpr int nameLength = 10;

// 64 random bits a call; the system's secure generator unless a test hands
// in another.
using RandomSource = std::function<quint64()>;
quint64 secureRandom();

// `length` characters of the alphabet, each drawn without modulo bias: the
// high word of a 64-bit draw times 62, with the draws that would favour some
// characters rejected and drawn again.
QString randomSlug(int length, const RandomSource &random = secureRandom);
// A number below `bound` from `random`, without bias.
quint64 uniformBelow(quint64 bound, const RandomSource &random);

// The extension as it stands in the file's name: what follows the last full
// stop of the last path component; empty for "name", "name." and ".hidden".
QString extensionOf(const QString &fileName);
// randomSlug(10), a full stop, the extension (a bare full stop when there is none).
QString keyForFile(const QString &fileName, const RandomSource &random = secureRandom);

// What a file of `kind` is sent as: GIF and MPEG-4 for recordings, otherwise
// the type its extension names, or "application/octet-stream".
QString contentType(const QString &fileName, CaptureKind kind);

} // namespace ObjectNames
