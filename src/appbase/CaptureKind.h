#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <optional>

// The kind of a capture file or history entry. The raw text of each case is
// its name; the order below is the order kinds are tried and listed in.
enum class CaptureKind { image, text, gif, video };

namespace CaptureKinds {

inline constexpr std::array all = {CaptureKind::image, CaptureKind::text, CaptureKind::gif, CaptureKind::video};

QString rawValue(CaptureKind kind);
std::optional<CaptureKind> fromRawValue(const QString &text);

// Lower-case extensions without the dot; `text` has none, it lives in a list.
QStringList fileExtensions(CaptureKind kind);

// The first kind, in the order of `all`, whose extensions hold `extension`
// (compared without regard to case, so "PNG" from another tool still counts).
std::optional<CaptureKind> of(const QString &fileExtension);

} // namespace CaptureKinds
