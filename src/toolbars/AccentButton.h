#pragma once

#include <QAbstractButton>

// The header's main action: white text on the accent colour.
class AccentButton : public QAbstractButton
{
    Q_OBJECT

public:
    explicit AccentButton(const QString &title, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
