#pragma once

#include "appui/SettingsPage.h"

#include <QAbstractButton>

// A page's entry in the settings sidebar: its tile and title, filled while
// its page is on show.
class SettingsSidebarItem : public QAbstractButton
{
    Q_OBJECT

public:
    explicit SettingsSidebarItem(const SettingsPage &page, QWidget *parent = nullptr);

    const QString &pageId() const { return m_pageId; }
    QColor fillColor() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_pageId;
    Lucide m_symbol;
    QColor m_tile;
};
