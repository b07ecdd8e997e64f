#pragma once

#include <QWidget>

class QLabel;
class QVBoxLayout;

// A titled set of rows on a card: the title in the caption font above, the
// rows on the theme's card colour, a hairline between each two.
class SettingsGroup : public QWidget
{
    Q_OBJECT

public:
    // An empty title shows the card alone.
    explicit SettingsGroup(const QString &title = {}, QWidget *parent = nullptr);

    QString title() const;
    QLabel *titleLabel() const { return m_title; }

    // Adds a row (a SettingsRow or any widget) at the end of the card.
    void addRow(QWidget *row);
    int rowCount() const { return m_rowCount; }
    // Where the card is drawn, in this widget's coordinates.
    QRect cardRect() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QLabel *m_title;
    QWidget *m_card;
    QVBoxLayout *m_rows;
    int m_rowCount = 0;
};
