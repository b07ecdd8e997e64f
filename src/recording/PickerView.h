#pragma once

#include "recording/PickerDrag.h"

#include <QElapsedTimer>
#include <QWidget>

#include <functional>
#include <optional>

// The live area picker's window over one display. The screen's content goes
// on moving under it: with a compositing manager the window is see-through,
// dimmed by black at 0.25; without one it is cut to a screen of thin black
// lines (one row in four, the same quarter of darkness), the red outline of
// the drag and the two pills, and everything between shows the live screen.
// It takes the pointer and the keyboard while it is up, so a drag anywhere
// reaches it and Escape cancels.
class PickerView : public QWidget
{
public:
    // The chosen area in the view's points, y up; absent on cancel.
    using OnDone = std::function<void(std::optional<QRectF>)>;

    PickerView(const QString &hint, bool translucent, OnDone onDone, QWidget *parent = nullptr);
    ~PickerView() override;

    bool isTranslucent() const { return m_translucent; }
    const PickerDrag &drag() const { return m_drag; }
    // Milliseconds from construction to the window first shown on screen.
    qint64 msToExposed() const { return m_exposedAfterMs; }

    // The rows of the dim without a compositor: every fourth one.
    static constexpr int lineSpacing = 4;
    static QColor dimColour();
    static QColor pillColour();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    bool event(QEvent *event) override;

private:
    QPointF toView(QPointF qt) const;
    QRectF toQt(const QRectF &view) const;
    void changed();
    void updateShape();
    void takeInput(int attempt);
    QRectF sizePillQt(const QRectF &selection) const;
    QRectF hintPillQt() const;

    QString m_hint;
    bool m_translucent;
    OnDone m_onDone;
    PickerDrag m_drag;
    bool m_done = false;
    QElapsedTimer m_sinceMade;
    qint64 m_exposedAfterMs = -1;
};
