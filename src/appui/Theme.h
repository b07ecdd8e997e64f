#pragma once

#include <QColor>
#include <QFont>
#include <QObject>

// The colours and fonts of glimpso's own windows, in a light and a dark
// appearance. The appearance follows the desktop: its colour scheme where Qt
// reports one, otherwise the lightness of the application palette's window
// colour. Readers ask at paint time, so a widget that repaints on a change
// of appearance always shows the right pair.
//
// A Theme object only watches: it says when the desktop's appearance changes.
// The values themselves are static, so any widget can read them.
class Theme : public QObject
{
    Q_OBJECT

public:
    enum class Appearance { light, dark };
    Q_ENUM(Appearance)

    enum class Color {
        ink,
        inkSecondary,
        windowBg,
        sidebarBg,
        card,
        control,
        success,
        successInk,
        successTint,
        danger,
        toggleOff,
        hairline,
        accent,
        warning,
    };
    static constexpr int colorCount = int(Color::warning) + 1;

    // The colours of icon tiles, the same in both appearances; the symbol on a
    // tile is white.
    enum class Tile { gray, blue, green, orange, red, purple, pink, teal, indigo, yellow };
    static constexpr int tileCount = int(Tile::yellow) + 1;

    explicit Theme(QObject *parent = nullptr);

    // The appearance this watcher last saw; the same as desktopAppearance()
    // except between a change and the signal that tells of it.
    Appearance appearance() const { return m_appearance; }

    // What the desktop asks for now.
    static Appearance desktopAppearance();
    // The appearance a palette stands for: dark when its window colour is.
    static Appearance appearanceOf(const QPalette &palette);
    static bool isDark() { return desktopAppearance() == Appearance::dark; }

    // A colour of the current appearance, or of the one named.
    static QColor color(Color name) { return color(name, desktopAppearance()); }
    static QColor color(Color name, Appearance appearance);
    static QColor tile(Tile name);

    // A palette for standard widgets inside themed windows, so that fields,
    // lists and pop-ups agree with the custom-drawn parts.
    static QPalette palette(Appearance appearance);

    // Derived from the application font, so they follow the desktop's size.
    static QFont pageTitle();
    static QFont caption();
    static QFont body();

Q_SIGNALS:
    void appearanceChanged(Theme::Appearance appearance);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void recheck();

    Appearance m_appearance;
};
