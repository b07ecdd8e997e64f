#pragma once

#include "annotation/TextOptions.h"

#include <QColor>
#include <QImage>
#include <QList>
#include <QWidget>

#include <functional>

class MenuChip;
class QMenu;

// The text size and the text's font and style, each a small menu; shown on a
// toolbar while the text tool or a text mark is active.
class TextOptionsControl : public QWidget
{
    Q_OBJECT

public:
    explicit TextOptionsControl(int height, QWidget *parent = nullptr);

    std::function<void(const glimpso::TextOptions &)> onChange;

    void set(const glimpso::TextOptions &options);
    const glimpso::TextOptions &options() const { return m_options; }
    void setTint(const QColor &tint);

    MenuChip *sizeButton() const { return m_sizeButton; }
    MenuChip *styleButton() const { return m_styleButton; }

    // The sizes the size menu lists: the usual ones, with `current` in its
    // sorted place when it is not one of them.
    static QList<int> menuSizes(double current);
    // "A" in the style and font, in `tint`, centred in a square of `side`.
    static QImage preview(glimpso::TextStyle style, const glimpso::TextFont &font, const QColor &tint, qreal side,
                          qreal devicePixelRatio = 1.0);
    // The family names offered under "More Fonts": the installed ones, without
    // the hidden ones whose names begin with a dot.
    static QStringList moreFontFamilies(const QStringList &installed);

    // Fill the two menus for the present options (public for tests).
    void fillSizeMenu(QMenu &menu);
    void fillStyleMenu(QMenu &menu);

private:
    void choose(const glimpso::TextOptions &options);
    void openMenu(MenuChip *chip, void (TextOptionsControl::*fill)(QMenu &));
    void refresh();

    glimpso::TextOptions m_options;
    MenuChip *m_sizeButton;
    QWidget *m_divider;
    MenuChip *m_styleButton;
    QColor m_tint = Qt::black;
};
