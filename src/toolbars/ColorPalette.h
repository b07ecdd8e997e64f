#pragma once

#include "toolbars/ToolbarPopover.h"

#include <QColor>
#include <QList>

#include <functional>

class QPushButton;

// The colour chip's panel: a grid of common ink colours and "More…", which
// opens the desktop's full colour chooser.
class ColorPalette : public ToolbarPopover
{
    Q_OBJECT

public:
    explicit ColorPalette(QWidget *parent = nullptr);

    std::function<void(const QColor &)> onPick;
    void setCurrent(const QColor &colour);

    static const QList<QColor> &swatches();
    // The swatch button of a colour of the grid, for tests and logs.
    QWidget *swatchFor(const QColor &colour) const;
    QPushButton *moreButton() const { return m_more; }
    // Where each swatch is on the screen, in the debug log (for scripts that click them).
    void logPlaces() const;

private:
    void pick(const QColor &colour);
    void chooseMore();

    QList<QWidget *> m_swatchButtons;
    QPushButton *m_more = nullptr;
    QColor m_current;
};
