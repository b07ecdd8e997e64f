#pragma once

#include <QFrame>

#include <functional>

// A small panel that opens under a toolbar control inside the same window,
// so that it stays above the frozen screen without a window of its own. A
// press anywhere outside it or Escape closes it, as a transient popover does.
class ToolbarPopover : public QFrame
{
    Q_OBJECT

public:
    explicit ToolbarPopover(QWidget *parent = nullptr);
    ~ToolbarPopover() override;

    // Opens under `anchor`, 4 points off its lower edge, kept inside the window.
    void showBelow(QWidget *anchor);
    void dismiss();
    bool isOpen() const { return m_open; }

    std::function<void()> onClose;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_open = false;
};
