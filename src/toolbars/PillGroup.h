#pragma once

#include <QWidget>

class QHBoxLayout;

// A rounded bar that groups a few controls of the header toolbar.
class PillGroup : public QWidget
{
    Q_OBJECT

public:
    explicit PillGroup(QWidget *parent = nullptr);

    void add(QWidget *view);
    QHBoxLayout *stack() const { return m_stack; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QHBoxLayout *m_stack;
};
