#include "appui/Theme.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>
#include <QStyleHints>

#include <array>

namespace {

struct ColorPair {
    QRgb light;
    QRgb dark;
};

// In the order of Theme::Color. Hairlines are black or white with a low alpha
// so they read on any of the surfaces below them.
constexpr std::array<ColorPair, Theme::colorCount> colorPairs{{
    {qRgb(0x15, 0x17, 0x1B), qRgb(0xF2, 0xF3, 0xF5)}, // ink
    {qRgb(0x5C, 0x63, 0x6D), qRgb(0xA2, 0xA8, 0xB2)}, // inkSecondary
    {qRgb(0xF6, 0xF7, 0xF9), qRgb(0x1C, 0x1D, 0x20)}, // windowBg
    {qRgb(0xEC, 0xEE, 0xF2), qRgb(0x23, 0x24, 0x28)}, // sidebarBg
    {qRgb(0xFF, 0xFF, 0xFF), qRgb(0x2A, 0x2B, 0x30)}, // card
    {qRgb(0xEC, 0xEE, 0xF2), qRgb(0x3A, 0x3B, 0x41)}, // control
    {qRgb(0x22, 0xA3, 0x50), qRgb(0x34, 0xC2, 0x6A)}, // success
    {qRgb(0x1E, 0x7A, 0x3E), qRgb(0x5F, 0xD3, 0x8A)}, // successInk
    {qRgb(0xE3, 0xF4, 0xE8), qRgb(0x1D, 0x33, 0x24)}, // successTint
    {qRgb(0xB3, 0x26, 0x1E), qRgb(0xFF, 0x6B, 0x61)}, // danger
    {qRgb(0xCD, 0xD2, 0xDA), qRgb(0x4A, 0x4B, 0x52)}, // toggleOff
    {qRgba(0x00, 0x00, 0x00, 0x1F), qRgba(0xFF, 0xFF, 0xFF, 0x1F)}, // hairline
    {qRgb(0x0A, 0x6C, 0xF0), qRgb(0x3D, 0x8F, 0xFF)}, // accent
    {qRgb(0xB2, 0x5E, 0x02), qRgb(0xF5, 0xA5, 0x24)}, // warning
}};

// In the order of Theme::Tile.
constexpr std::array<QRgb, Theme::tileCount> tileColors{{
    qRgb(0x8E, 0x8E, 0x93), // gray
    qRgb(0x0A, 0x84, 0xFF), // blue
    qRgb(0x30, 0xB0, 0x50), // green
    qRgb(0xFF, 0x95, 0x00), // orange
    qRgb(0xFF, 0x3B, 0x30), // red
    qRgb(0xAF, 0x52, 0xDE), // purple
    qRgb(0xFF, 0x2D, 0x55), // pink
    qRgb(0x30, 0xB0, 0xC7), // teal
    qRgb(0x58, 0x56, 0xD6), // indigo
    qRgb(0xF2, 0xB7, 0x05), // yellow
}};

QFont scaledFont(qreal factor, QFont::Weight weight)
{
    QFont font = QApplication::font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(qRound(font.pixelSize() * factor));
    font.setWeight(weight);
    return font;
}

} // namespace

Theme::Theme(QObject *parent)
    : QObject(parent)
    , m_appearance(desktopAppearance())
{
    // The palette changes arrive as an event to the application object; a
    // filter there is the only place a non-widget hears of them.
    qApp->installEventFilter(this);
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    connect(QGuiApplication::styleHints(), &QStyleHints::colorSchemeChanged, this, &Theme::recheck);
#endif
}

Theme::Appearance Theme::desktopAppearance()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    switch (QGuiApplication::styleHints()->colorScheme()) {
    case Qt::ColorScheme::Dark:
        return Appearance::dark;
    case Qt::ColorScheme::Light:
        return Appearance::light;
    case Qt::ColorScheme::Unknown:
        break;
    }
#endif
    return appearanceOf(QGuiApplication::palette());
}

Theme::Appearance Theme::appearanceOf(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightnessF() < 0.5 ? Appearance::dark : Appearance::light;
}

QColor Theme::color(Color name, Appearance appearance)
{
    const ColorPair &pair = colorPairs[size_t(name)];
    return QColor::fromRgba(appearance == Appearance::dark ? pair.dark : pair.light);
}

QColor Theme::tile(Tile name)
{
    return QColor::fromRgb(tileColors[size_t(name)]);
}

QPalette Theme::palette(Appearance appearance)
{
    const auto c = [appearance](Color name) { return color(name, appearance); };
    QPalette palette;
    palette.setColor(QPalette::Window, c(Color::windowBg));
    palette.setColor(QPalette::WindowText, c(Color::ink));
    palette.setColor(QPalette::Base, c(Color::card));
    palette.setColor(QPalette::AlternateBase, c(Color::sidebarBg));
    palette.setColor(QPalette::Text, c(Color::ink));
    palette.setColor(QPalette::PlaceholderText, c(Color::inkSecondary));
    palette.setColor(QPalette::Button, c(Color::control));
    palette.setColor(QPalette::ButtonText, c(Color::ink));
    palette.setColor(QPalette::Highlight, c(Color::accent));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, c(Color::card));
    palette.setColor(QPalette::ToolTipText, c(Color::ink));
    palette.setColor(QPalette::Link, c(Color::accent));
    palette.setColor(QPalette::Mid, c(Color::toggleOff));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, c(Color::inkSecondary));
    return palette;
}

QFont Theme::pageTitle()
{
    return scaledFont(1.6, QFont::DemiBold);
}

QFont Theme::caption()
{
    return scaledFont(0.9, QFont::DemiBold);
}

QFont Theme::body()
{
    return scaledFont(1.0, QFont::Normal);
}

bool Theme::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        recheck();
    return QObject::eventFilter(watched, event);
}

void Theme::recheck()
{
    const Appearance now = desktopAppearance();
    if (now == m_appearance)
        return;
    m_appearance = now;
    Q_EMIT appearanceChanged(now);
}
