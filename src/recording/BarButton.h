#pragma once

#include <QWidget>

#include <functional>

// The control bar's two buttons: Stop (a red capsule with a square and the
// word) and Cancel (a cross, with a round shade under the pointer). A press
// that is released inside the button runs its action.
class BarButton : public QWidget
{
public:
    enum class Kind { stop, cancel };

    BarButton(Kind kind, std::function<void()> action, QWidget *parent = nullptr);

    Kind kind() const { return m_kind; }
    bool isHovering() const { return m_hovering; }
    bool isPressed() const { return m_pressed; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    Kind m_kind;
    std::function<void()> m_action;
    bool m_hovering = false;
    bool m_pressed = false;
};
