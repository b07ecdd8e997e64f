#pragma once

#include "appui/Lucide.h"

#include <QColor>
#include <QWidget>

#include <optional>

class QLabel;
class QHBoxLayout;

// One setting in a group: an icon tile, the title with its hint under it in
// the secondary ink, and the control at the end of the row.
class SettingsRow : public QWidget
{
    Q_OBJECT

public:
    SettingsRow(std::optional<Lucide> symbol, const QColor &tile, const QString &title, const QString &hint = {},
                QWidget *trailing = nullptr, QWidget *parent = nullptr);

    QString title() const;
    // Empty when the row has no hint; the hint line is then hidden.
    QString hint() const;
    void setHint(const QString &hint);
    QWidget *trailing() const { return m_trailing; }

    QLabel *titleLabel() const { return m_title; }
    QLabel *hintLabel() const { return m_hint; }

private:
    QLabel *m_title;
    QLabel *m_hint;
    QWidget *m_trailing;
};
