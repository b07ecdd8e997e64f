#pragma once

#include "acquire/DesktopSpace.h"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QRectF>
#include <QWidget>

class WindowPicker;

// The picker's window on one display: the display as it was, under a veil
// with the hovered window cut out and outlined, its label, and the hint
// where the pointer is.
class WindowPickerWindow : public QWidget
{
public:
    // `frame`: the display in global points; `picture`: the display as it
    // was (a null picture shows the veil over black).
    WindowPickerWindow(WindowPicker &picker, const QRectF &frame, const QImage &picture, const DesktopSpace &space,
                       const QColor &accent);

    QPointF toLocal(const QPointF &global) const;
    QRectF toLocal(const QRectF &global) const;
    QPointF toGlobal(const QPointF &local) const;
    const QRectF &frame() const { return m_frame; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void drawPill(QPainter &painter, const QRectF &pill, const QString &text);

    WindowPicker &m_picker;
    QRectF m_frame;
    QImage m_picture;
    DesktopSpace m_space;
    QPoint m_qtOrigin;
    QColor m_accent;
    QFont m_font;
};
