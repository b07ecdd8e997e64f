#include "toolbars/ColorPalette.h"

#include "settings/HexColor.h"

#include <QColorDialog>
#include <QGridLayout>
#include <QLoggingCategory>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

Q_LOGGING_CATEGORY(lcColorPalette, "glimpso.ColorPalette")

namespace {

constexpr int columns = 6;
constexpr int swatchSide = 22;

// One round colour well of the grid.
class Swatch : public QPushButton
{
public:
    Swatch(const QColor &colour, QWidget *parent) : QPushButton(parent), m_colour(colour)
    {
        setFixedSize(swatchSide, swatchSide);
        setFocusPolicy(Qt::NoFocus);
        setToolTip(HexColor::format(colour));
        setAccessibleName(HexColor::format(colour));
        setCursor(Qt::PointingHandCursor);
    }

    bool current = false;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor edge = palette().color(QPalette::WindowText);
        edge.setAlphaF(current ? 0.9f : 0.25f);
        painter.setPen(QPen(edge, current ? 2 : 1));
        painter.setBrush(m_colour);
        painter.drawEllipse(QRectF(rect()).adjusted(2, 2, -2, -2));
    }

private:
    QColor m_colour;
};

} // namespace

const QList<QColor> &ColorPalette::swatches()
{
    static const QList<QColor> colours{
        QColor(QRgb(0xFF3B30)), QColor(QRgb(0xFF9500)), QColor(QRgb(0xFFCC00)), QColor(QRgb(0x34C759)), QColor(QRgb(0x00C7BE)), QColor(QRgb(0x007AFF)),
        QColor(QRgb(0x5856D6)), QColor(QRgb(0xAF52DE)), QColor(QRgb(0xFF2D55)), QColor(QRgb(0xFFFFFF)), QColor(QRgb(0x8E8E93)), QColor(QRgb(0x000000)),
    };
    return colours;
}

ColorPalette::ColorPalette(QWidget *parent) : ToolbarPopover(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(8);
    auto *grid = new QGridLayout;
    grid->setSpacing(6);
    for (int index = 0; index < swatches().size(); ++index) {
        const QColor colour = swatches()[index];
        auto *swatch = new Swatch(colour, this);
        connect(swatch, &QPushButton::clicked, this, [this, colour] { pick(colour); });
        grid->addWidget(swatch, index / columns, index % columns);
        m_swatchButtons.append(swatch);
    }
    layout->addLayout(grid);
    m_more = new QPushButton(tr("More…"), this);
    m_more->setFocusPolicy(Qt::NoFocus);
    connect(m_more, &QPushButton::clicked, this, &ColorPalette::chooseMore);
    layout->addWidget(m_more);
}

void ColorPalette::setCurrent(const QColor &colour)
{
    m_current = colour;
    for (int index = 0; index < m_swatchButtons.size(); ++index) {
        auto *swatch = static_cast<Swatch *>(m_swatchButtons[index]);
        swatch->current = swatches()[index].rgb() == colour.rgb();
        swatch->update();
    }
}

QWidget *ColorPalette::swatchFor(const QColor &colour) const
{
    const qsizetype index = swatches().indexOf(QColor(colour.rgb()));
    return index < 0 ? nullptr : m_swatchButtons[index];
}

void ColorPalette::pick(const QColor &colour)
{
    setCurrent(colour);
    dismiss();
    if (onPick)
        onPick(colour);
}

void ColorPalette::chooseMore()
{
    QWidget *host = window();
    dismiss();
    // The frozen screen is a topmost window that no window manager stacks
    // under another: the chooser lives inside it, as a panel, to be seen.
    auto *chooser = new QColorDialog(m_current, host);
    chooser->setWindowFlags(Qt::Widget);
    chooser->setOptions(QColorDialog::DontUseNativeDialog);
    chooser->setAutoFillBackground(true);
    chooser->setCursor(Qt::ArrowCursor);
    connect(chooser, &QColorDialog::colorSelected, this, [this](const QColor &colour) {
        setCurrent(colour);
        if (onPick)
            onPick(colour);
    });
    connect(chooser, &QDialog::finished, chooser, &QObject::deleteLater);
    chooser->adjustSize();
    chooser->move((host->width() - chooser->width()) / 2, (host->height() - chooser->height()) / 2);
    chooser->show();
    chooser->raise();
    chooser->setFocus();
}

void ColorPalette::logPlaces() const
{
    if (!lcColorPalette().isDebugEnabled())
        return;
    for (int index = 0; index < m_swatchButtons.size(); ++index) {
        const QWidget *swatch = m_swatchButtons[index];
        const QPoint centre = swatch->mapToGlobal(swatch->rect().center());
        qCDebug(lcColorPalette).noquote() << "swatch" << HexColor::format(swatches()[index]) << "at"
                                          << QStringLiteral("%1,%2").arg(centre.x()).arg(centre.y());
    }
}
