#pragma once

#include "output/Toasting.h"

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>

// glimpso's own notice: a small dark frameless window above everything, near
// the top right of the screen under the pointer, with a title and a message.
// It fades in, stands its time and fades out; a new one replaces it at once.
// Main thread only.
class HUDToast : public QObject, public Toasting
{
    Q_OBJECT

public:
    // The widest a line of text may be before it is shortened in the middle.
    static constexpr int maxTextWidth = 440;
    // Distance from the top and the right of the screen's usable area.
    static constexpr int screenMargin = 24;

    explicit HUDToast(QObject *parent = nullptr);
    ~HUDToast() override;

    void show(const QString &title, const QString &body, double seconds, std::function<void()> onClick) override;
    void dismiss() override;
    void changeText(const QString &title, const QString &body) override;

    // The window standing now, if any.
    QWidget *panel() const { return m_panel; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *makePanel(const QString &title, const QString &body, bool clickable) const;
    // Sets the words and sizes the panel around them.
    static void arrange(QWidget *panel, const QString &title, const QString &body);
    void place(QWidget *panel) const;
    void forget(QWidget *panel);

    QPointer<QWidget> m_panel;
    QTimer m_dismissTimer;
    std::function<void()> m_onClick;
};
