#pragma once

#include <QString>

#include <optional>

namespace glimpso {

// How a text annotation sets itself off from the picture. The stored text of
// each case is its name ("plain", "outline", "background").
enum class TextStyle {
    plain,
    outline,
    background,
};

QString toString(TextStyle style);
std::optional<TextStyle> textStyleFromString(const QString &name);

// Which typeface a text annotation uses: one of four looks that follow the
// desktop, or any installed family by name.
struct TextFont {
    enum class Kind {
        family,
        system,
        rounded,
        serif,
        mono,
    };

    Kind kind = Kind::system;
    QString familyName; // only for Kind::family

    static TextFont family(const QString &name) { return {Kind::family, name}; }
    static TextFont system() { return {Kind::system, {}}; }
    static TextFont rounded() { return {Kind::rounded, {}}; }
    static TextFont serif() { return {Kind::serif, {}}; }
    static TextFont mono() { return {Kind::mono, {}}; }

    bool operator==(const TextFont &other) const
    {
        return kind == other.kind && (kind != Kind::family || familyName == other.familyName);
    }
};

// The text attributes chosen in the toolbar, compared field by field.
struct TextOptions {
    double size = 20;
    TextStyle style = TextStyle::plain;
    TextFont font = TextFont::system();

    bool operator==(const TextOptions &other) const = default;
};

} // namespace glimpso
