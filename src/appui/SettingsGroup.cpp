#include "appui/SettingsGroup.h"

#include "appui/RowDivider.h"
#include "appui/Theme.h"
#include "appui/ThemedLabel.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace {

constexpr qreal cardRadius = 10;
// Dividers start where the row's text does, past the icon tile.
constexpr int dividerInset = 12 + 26 + 12;
constexpr int titleIndent = 4;

} // namespace

SettingsGroup::SettingsGroup(const QString &title, QWidget *parent)
    : QWidget(parent)
    , m_title(new ThemedLabel(title, Theme::Color::inkSecondary, Theme::caption()))
    , m_card(new QWidget)
    , m_rows(new QVBoxLayout(m_card))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    m_title->setContentsMargins(titleIndent, 0, 0, 0);
    m_title->setVisible(!title.isEmpty());
    column->addWidget(m_title);
    m_rows->setContentsMargins(0, 0, 0, 0);
    m_rows->setSpacing(0);
    column->addWidget(m_card);
}

QString SettingsGroup::title() const
{
    return m_title->text();
}

void SettingsGroup::addRow(QWidget *row)
{
    if (m_rowCount > 0)
        m_rows->addWidget(new RowDivider(dividerInset));
    m_rows->addWidget(row);
    ++m_rowCount;
}

QRect SettingsGroup::cardRect() const
{
    return m_card->geometry();
}

void SettingsGroup::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Theme::color(Theme::Color::hairline), 1));
    painter.setBrush(Theme::color(Theme::Color::card));
    painter.drawRoundedRect(QRectF(cardRect()).adjusted(0.5, 0.5, -0.5, -0.5), cardRadius, cardRadius);
}
