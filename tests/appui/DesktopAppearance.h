#pragma once

#include <QApplication>
#include <QPalette>

// Sets the application palette to a light or a dark desktop's for the life of
// the object, the way a desktop's colour scheme reaches Qt, and puts the
// palette that was there back afterwards.
class DesktopAppearance
{
public:
    enum Kind { light, dark };

    explicit DesktopAppearance(Kind kind)
        : m_previous(QApplication::palette())
    {
        QApplication::setPalette(paletteOf(kind));
    }
    ~DesktopAppearance() { QApplication::setPalette(m_previous); }

    static QPalette paletteOf(Kind kind)
    {
        QPalette palette;
        const bool isDark = kind == dark;
        palette.setColor(QPalette::Window, isDark ? QColor(0x2B, 0x2B, 0x2B) : QColor(0xEF, 0xEF, 0xEF));
        palette.setColor(QPalette::WindowText, isDark ? Qt::white : Qt::black);
        return palette;
    }

private:
    QPalette m_previous;
};
