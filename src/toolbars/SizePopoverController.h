#pragma once

#include "toolbars/ToolbarPopover.h"

#include <QSize>

#include <functional>
#include <optional>

class QLineEdit;
class QPushButton;

// The panel under the size chip: width × height in physical pixels and
// "Apply". Only whole numbers from 1 to 20000 are taken.
class SizePopoverController : public ToolbarPopover
{
    Q_OBJECT

public:
    static constexpr int largestSide = 20000;

    SizePopoverController(const QSize &initial, QWidget *parent = nullptr);

    std::function<void(int width, int height)> onApply;

    // Applies what the fields hold when both are valid; false otherwise.
    bool apply();
    // A side as typed: a whole number from 1 to 20000, else none.
    static std::optional<int> side(const QString &text);

    QLineEdit *widthField() const { return m_wField; }
    QLineEdit *heightField() const { return m_hField; }
    QPushButton *applyButton() const { return m_apply; }
    // Selects the width field's text and puts the caret there.
    void focusFirstField();

private:
    QLineEdit *m_wField;
    QLineEdit *m_hField;
    QPushButton *m_apply;
    QSize m_initial;
};
