#include "appui/SettingsShell.h"

#include "appui/AppIconImage.h"
#include "appui/SettingsSidebarItem.h"
#include "appui/Theme.h"
#include "appui/ThemedLabel.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#ifndef GLIMPSO_BUILD_NUMBER
#define GLIMPSO_BUILD_NUMBER ""
#endif

namespace {

constexpr int sidebarWidth = 210;
constexpr int sidebarMargin = 10;
constexpr int groupGap = 14;
constexpr int appIconSize = 28;
constexpr int pageMargin = 28;

QLabel *secondaryLabel(const QString &text, const QFont &font)
{
    auto *label = new ThemedLabel(text, Theme::Color::inkSecondary, font);
    label->setWordWrap(true);
    return label;
}

} // namespace

SettingsShell::SettingsShell(const QString &appName, QList<SettingsPage> pages, PageFactory page,
                             AccessoryFactory accessory, QWidget *parent)
    : QWidget(parent)
    , m_pages(std::move(pages))
    , m_makePage(std::move(page))
    , m_theme(new Theme(this))
{
    setPalette(Theme::palette(m_theme->appearance()));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_sidebar = makeSidebar(appName, accessory);
    m_stack = new QStackedWidget;
    layout->addWidget(m_sidebar);
    layout->addWidget(m_stack, 1);
    connect(m_theme, &Theme::appearanceChanged, this, &SettingsShell::followAppearance);
    if (!m_pages.isEmpty())
        setSelection(m_pages.first().id);
}

QString SettingsShell::versionLine()
{
    return versionLine(QStringLiteral(GLIMPSO_VERSION), QStringLiteral(GLIMPSO_BUILD_NUMBER));
}

QString SettingsShell::versionLine(const QString &version, const QString &build)
{
    QString line = QStringLiteral("Version ") + version;
    if (!build.isEmpty())
        line += QStringLiteral(" (") + build + u')';
    return line;
}

QWidget *SettingsShell::makeHeader(const QString &appName)
{
    auto *header = new QWidget;
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(6, 6, 6, 10);
    row->setSpacing(8);
    row->addWidget(new AppIconImage(appIconSize));
    QFont nameFont = Theme::body();
    nameFont.setWeight(QFont::Bold);
    auto *name = new ThemedLabel(appName, Theme::Color::ink, nameFont);
    row->addWidget(name, 1);
    return header;
}

QWidget *SettingsShell::makeSidebar(const QString &appName, const AccessoryFactory &accessory)
{
    auto *sidebar = new QWidget;
    sidebar->setFixedWidth(sidebarWidth);
    auto *column = new QVBoxLayout(sidebar);
    column->setContentsMargins(sidebarMargin, sidebarMargin, sidebarMargin, sidebarMargin);
    column->setSpacing(2);
    column->addWidget(makeHeader(appName));

    m_items = new QButtonGroup(this);
    m_items->setExclusive(true);
    for (const SettingsPage &page : std::as_const(m_pages)) {
        if (page.startsGroup)
            column->addSpacing(groupGap);
        auto *item = new SettingsSidebarItem(page);
        m_items->addButton(item);
        connect(item, &QAbstractButton::clicked, this, [this, id = page.id] { setSelection(id); });
        column->addWidget(item);
    }
    column->addStretch(1);
    m_version = secondaryLabel(versionLine(), Theme::caption());
    m_version->setContentsMargins(6, 0, 0, 0);
    column->addWidget(m_version);
    if (accessory) {
        if (QWidget *extra = accessory())
            column->addWidget(extra);
    }
    return sidebar;
}

SettingsShell::Pane SettingsShell::makePane(const SettingsPage &page)
{
    Pane made;
    auto *body = new QWidget;
    auto *column = new QVBoxLayout(body);
    column->setContentsMargins(pageMargin, pageMargin - 6, pageMargin, pageMargin);
    column->setSpacing(18);
    if (page.showsHeader) {
        auto *header = new QVBoxLayout;
        header->setSpacing(2);
        made.title = new ThemedLabel(page.title, Theme::Color::ink, Theme::pageTitle());
        header->addWidget(made.title);
        header->addWidget(secondaryLabel(page.subtitle, Theme::body()));
        column->addLayout(header);
    }
    made.content = m_makePage ? m_makePage(page.id) : nullptr;
    if (made.content)
        column->addWidget(made.content);
    column->addStretch(1);

    auto *scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(body);
    // The window's own background shows through the scrolling area (setWidget
    // turns the body's fill on).
    scroll->viewport()->setAutoFillBackground(false);
    body->setAutoFillBackground(false);
    made.pane = scroll;
    return made;
}

const SettingsPage *SettingsShell::findPage(const QString &id) const
{
    for (const SettingsPage &page : m_pages)
        if (page.id == id)
            return &page;
    return nullptr;
}

void SettingsShell::setSelection(const QString &id)
{
    const SettingsPage *page = findPage(id);
    if (!page || id == m_selection)
        return;
    auto pane = m_panes.constFind(id);
    if (pane == m_panes.cend()) {
        pane = m_panes.insert(id, makePane(*page));
        m_stack->addWidget(pane->pane);
    }
    m_stack->setCurrentWidget(pane->pane);
    if (SettingsSidebarItem *item = sidebarItem(id))
        item->setChecked(true);
    m_selection = id;
    Q_EMIT selectionChanged(id);
}

SettingsSidebarItem *SettingsShell::sidebarItem(const QString &id) const
{
    const auto buttons = m_items->buttons();
    for (QAbstractButton *button : buttons) {
        auto *item = static_cast<SettingsSidebarItem *>(button);
        if (item->pageId() == id)
            return item;
    }
    return nullptr;
}

QWidget *SettingsShell::pageContent(const QString &id) const
{
    return m_panes.value(id).content;
}

QWidget *SettingsShell::currentPane() const
{
    return m_stack->currentWidget();
}

QLabel *SettingsShell::headerTitle(const QString &id) const
{
    return m_panes.value(id).title;
}

QRect SettingsShell::sidebarRect() const
{
    return m_sidebar->geometry();
}

void SettingsShell::followAppearance()
{
    // Children take the new palette, and with it a repaint and their own inks.
    setPalette(Theme::palette(m_theme->appearance()));
}

void SettingsShell::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::color(Theme::Color::windowBg));
    painter.fillRect(sidebarRect(), Theme::color(Theme::Color::sidebarBg));
    const QRectF edge(sidebarRect().right() + 1 - 1.0 / devicePixelRatioF(), 0, 1.0 / devicePixelRatioF(), height());
    painter.fillRect(edge, Theme::color(Theme::Color::hairline));
}
