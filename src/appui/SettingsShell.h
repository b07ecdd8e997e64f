#pragma once

#include "appui/SettingsPage.h"

#include <QHash>
#include <QList>
#include <QWidget>

#include <functional>

class QButtonGroup;
class QLabel;
class QStackedWidget;
class QVBoxLayout;
class SettingsSidebarItem;
class Theme;

// The frame of a settings window: a sidebar with the application's icon and
// name, the pages, the version line and an accessory below them; beside it
// the page on show, under its title and subtitle when the page has a header.
// Each page's content is made by `page` the first time it is chosen and kept,
// so what a page holds survives a visit to another.
class SettingsShell : public QWidget
{
    Q_OBJECT

public:
    using PageFactory = std::function<QWidget *(const QString &id)>;
    using AccessoryFactory = std::function<QWidget *()>;

    SettingsShell(const QString &appName, QList<SettingsPage> pages, PageFactory page,
                  AccessoryFactory accessory = {}, QWidget *parent = nullptr);

    const QList<SettingsPage> &pages() const { return m_pages; }
    // The id of the page on show; empty when there are no pages.
    QString selection() const { return m_selection; }
    // Shows the page with this id; an id that names no page changes nothing.
    void setSelection(const QString &id);

    // "Version 0.1.0", with the build in parentheses when there is one.
    static QString versionLine();
    static QString versionLine(const QString &version, const QString &build);

    // For tests and for windows that look into the frame.
    SettingsSidebarItem *sidebarItem(const QString &id) const;
    QWidget *pageContent(const QString &id) const;
    QWidget *currentPane() const;
    QLabel *headerTitle(const QString &id) const;
    QLabel *versionLabel() const { return m_version; }
    QRect sidebarRect() const;

Q_SIGNALS:
    void selectionChanged(const QString &id);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    struct Pane {
        QWidget *pane = nullptr;
        QWidget *content = nullptr;
        QLabel *title = nullptr;
    };

    QWidget *makeSidebar(const QString &appName, const AccessoryFactory &accessory);
    QWidget *makeHeader(const QString &appName);
    Pane makePane(const SettingsPage &page);
    const SettingsPage *findPage(const QString &id) const;
    void followAppearance();

    QList<SettingsPage> m_pages;
    PageFactory m_makePage;
    QString m_selection;
    QWidget *m_sidebar = nullptr;
    QButtonGroup *m_items = nullptr;
    QStackedWidget *m_stack = nullptr;
    QLabel *m_version = nullptr;
    QHash<QString, Pane> m_panes;
    Theme *m_theme;
};
