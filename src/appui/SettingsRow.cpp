#include "appui/SettingsRow.h"

#include "appui/IconTile.h"
#include "appui/Theme.h"
#include "appui/ThemedLabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr int tileSide = 26;
constexpr int tileSymbol = 15;
constexpr int rowPadding = 12;
constexpr int rowSpacing = 12;

QFont hintFont()
{
    QFont font = Theme::caption();
    font.setWeight(QFont::Normal);
    return font;
}

} // namespace

SettingsRow::SettingsRow(std::optional<Lucide> symbol, const QColor &tile, const QString &title, const QString &hint,
                         QWidget *trailing, QWidget *parent)
    : QWidget(parent)
    , m_title(new ThemedLabel(title, Theme::Color::ink, Theme::body()))
    , m_hint(new ThemedLabel(hint, Theme::Color::inkSecondary, hintFont()))
    , m_trailing(trailing)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(rowPadding, rowPadding - 2, rowPadding, rowPadding - 2);
    row->setSpacing(rowSpacing);
    if (symbol)
        row->addWidget(new IconTile(*symbol, tile, tileSide, tileSymbol), 0, Qt::AlignTop);

    auto *texts = new QVBoxLayout;
    texts->setContentsMargins(0, 0, 0, 0);
    texts->setSpacing(2);
    m_hint->setWordWrap(true);
    m_hint->setVisible(!hint.isEmpty());
    texts->addWidget(m_title);
    texts->addWidget(m_hint);
    row->addLayout(texts, 1);

    if (m_trailing)
        row->addWidget(m_trailing, 0, Qt::AlignVCenter | Qt::AlignRight);
}

QString SettingsRow::title() const
{
    return m_title->text();
}

QString SettingsRow::hint() const
{
    return m_hint->text();
}

void SettingsRow::setHint(const QString &hint)
{
    m_hint->setText(hint);
    m_hint->setVisible(!hint.isEmpty());
}
