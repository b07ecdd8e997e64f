#include "toolbars/TextOptionsControl.h"

#include "annotation/TextLook.h"
#include "toolbars/ChipPaint.h"
#include "toolbars/MenuChip.h"

#include <QActionGroup>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>

#include <algorithm>
#include <cmath>

using glimpso::TextFont;
using glimpso::TextOptions;
using glimpso::TextStyle;

namespace {

constexpr qreal previewSide = 18;

QString sizeTitle(int size)
{
    return QStringLiteral("%1 pt").arg(size);
}

struct FontChoice {
    const char *title;
    TextFont font;
};

const QList<FontChoice> &fontChoices()
{
    static const QList<FontChoice> choices{
        {QT_TRANSLATE_NOOP("TextOptionsControl", "System"), TextFont::system()},
        {QT_TRANSLATE_NOOP("TextOptionsControl", "Rounded"), TextFont::rounded()},
        {QT_TRANSLATE_NOOP("TextOptionsControl", "Serif"), TextFont::serif()},
        {QT_TRANSLATE_NOOP("TextOptionsControl", "Mono"), TextFont::mono()},
    };
    return choices;
}

struct StyleChoice {
    const char *title;
    TextStyle style;
};

const QList<StyleChoice> &styleChoices()
{
    static const QList<StyleChoice> choices{
        {QT_TRANSLATE_NOOP("TextOptionsControl", "Plain"), TextStyle::plain},
        {QT_TRANSLATE_NOOP("TextOptionsControl", "Outline"), TextStyle::outline},
        {QT_TRANSLATE_NOOP("TextOptionsControl", "Background"), TextStyle::background},
    };
    return choices;
}

QFont menuFont(const QMenu &menu)
{
    // Small system size, one up.
    QFont font = menu.font();
    font.setPointSizeF(QFontDatabase::systemFont(QFontDatabase::SmallestReadableFont).pointSizeF() + 1);
    return font;
}

} // namespace

TextOptionsControl::TextOptionsControl(int height, QWidget *parent) : QWidget(parent)
{
    setFixedHeight(height);
    auto *stack = new QHBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(4);
    m_sizeButton = new MenuChip(this);
    m_sizeButton->setToolTip(tr("Text size (scroll to change)"));
    m_sizeButton->setFixedHeight(height);
    m_divider = new QWidget(this);
    m_divider->setFixedSize(1, 16);
    m_divider->setAutoFillBackground(true);
    m_styleButton = new MenuChip(this);
    m_styleButton->setToolTip(tr("Font and style"));
    m_styleButton->setAccessibleName(tr("Font and style"));
    m_styleButton->setFixedHeight(height);
    stack->addWidget(m_sizeButton);
    stack->addWidget(m_divider, 0, Qt::AlignVCenter);
    stack->addWidget(m_styleButton);
    m_sizeButton->onPress = [this] { openMenu(m_sizeButton, &TextOptionsControl::fillSizeMenu); };
    m_styleButton->onPress = [this] { openMenu(m_styleButton, &TextOptionsControl::fillStyleMenu); };
    refresh();
}

void TextOptionsControl::set(const TextOptions &options)
{
    m_options = options;
    refresh();
}

void TextOptionsControl::setTint(const QColor &tint)
{
    m_tint = tint;
    m_sizeButton->setTint(tint);
    m_styleButton->setTint(tint);
    QPalette colours = m_divider->palette();
    colours.setColor(QPalette::Window, ChipPaint::faded(tint, 0.25));
    m_divider->setPalette(colours);
    refresh();
}

void TextOptionsControl::refresh()
{
    m_sizeButton->setTitle(sizeTitle(int(std::lround(m_options.size))));
    m_styleButton->setImage(preview(m_options.style, m_options.font, m_tint, previewSide, devicePixelRatioF()));
    adjustSize();
}

QList<int> TextOptionsControl::menuSizes(double current)
{
    QList<int> sizes{12, 14, 16, 20, 24, 32, 40, 48, 64};
    const int rounded = int(std::lround(current));
    if (!sizes.contains(rounded)) {
        sizes.append(rounded);
        std::sort(sizes.begin(), sizes.end());
    }
    return sizes;
}

QImage TextOptionsControl::preview(TextStyle style, const TextFont &font, const QColor &tint, qreal side,
                                   qreal devicePixelRatio)
{
    QImage image(QSize(int(std::ceil(side * devicePixelRatio)), int(std::ceil(side * devicePixelRatio))),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    const TextOptions options{15, style, font};
    const QString letter = QStringLiteral("A");
    const QSizeF box = glimpso::TextLook::boxSize(letter, options);
    // A box larger than the square is scaled down to fit, keeping its centre.
    const qreal scale = std::min<qreal>(1.0, side / std::max(box.width(), box.height()));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.translate(side / 2, side / 2);
    painter.scale(scale, scale);
    glimpso::TextLook::draw(painter, letter, options, tint, QRectF(QPointF(-box.width() / 2, -box.height() / 2), box));
    return image;
}

QStringList TextOptionsControl::moreFontFamilies(const QStringList &installed)
{
    QStringList families;
    for (const QString &family : installed) {
        if (!family.startsWith(u'.'))
            families.append(family);
    }
    return families;
}

void TextOptionsControl::choose(const TextOptions &options)
{
    m_options = options;
    refresh();
    if (onChange)
        onChange(m_options);
}

void TextOptionsControl::openMenu(MenuChip *chip, void (TextOptionsControl::*fill)(QMenu &))
{
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    (this->*fill)(*menu);
    chip->setOpen(true);
    connect(menu, &QMenu::aboutToHide, chip, [chip] { chip->setOpen(false); });
    menu->popup(chip->mapToGlobal(QPoint(0, chip->height() + 4)));
}

void TextOptionsControl::fillSizeMenu(QMenu &menu)
{
    menu.setFont(menuFont(menu));
    const int current = int(std::lround(m_options.size));
    for (const int size : menuSizes(m_options.size)) {
        QAction *item = menu.addAction(sizeTitle(size));
        item->setCheckable(true);
        item->setChecked(size == current);
        connect(item, &QAction::triggered, this, [this, size] {
            TextOptions options = m_options;
            options.size = size;
            choose(options);
        });
    }
}

void TextOptionsControl::fillStyleMenu(QMenu &menu)
{
    menu.setFont(menuFont(menu));
    menu.addSection(tr("Font"));
    const auto addFont = [this, &menu](const QString &title, const TextFont &font) {
        QAction *item = menu.addAction(title);
        item->setCheckable(true);
        item->setChecked(m_options.font == font);
        connect(item, &QAction::triggered, this, [this, font] {
            TextOptions options = m_options;
            options.font = font;
            choose(options);
        });
    };
    for (const FontChoice &choice : fontChoices())
        addFont(tr(choice.title), choice.font);
    if (m_options.font.kind == TextFont::Kind::family)
        addFont(m_options.font.familyName, m_options.font);

    QMenu *more = menu.addMenu(tr("More Fonts"));
    // Listing every installed family is slow; it happens when first opened.
    connect(more, &QMenu::aboutToShow, this, [this, more] {
        if (!more->isEmpty())
            return;
        for (const QString &family : moreFontFamilies(QFontDatabase::families())) {
            QAction *item = more->addAction(family);
            QFont look(family);
            look.setPointSizeF(more->font().pointSizeF() + 1);
            item->setFont(look);
            connect(item, &QAction::triggered, this, [this, family] {
                TextOptions options = m_options;
                options.font = TextFont::family(family);
                choose(options);
            });
        }
    });

    menu.addSection(tr("Style"));
    for (const StyleChoice &choice : styleChoices()) {
        const TextStyle style = choice.style;
        QAction *item = menu.addAction(QIcon(QPixmap::fromImage(preview(style, m_options.font, m_tint, previewSide,
                                                                        devicePixelRatioF()))),
                                       tr(choice.title));
        item->setCheckable(true);
        item->setChecked(m_options.style == style);
        connect(item, &QAction::triggered, this, [this, style] {
            TextOptions options = m_options;
            options.style = style;
            choose(options);
        });
    }
}
