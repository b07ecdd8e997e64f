#pragma once

#include <QFrame>
#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <functional>

class QToolButton;

// A small grid of common emoji for the text being typed, opened by the text
// box's button. A pick goes to `onPick` (the field inserts it at its caret);
// its buttons never take the keyboard, so typing goes on in the field.
class EmojiPicker : public QFrame
{
    Q_OBJECT

public:
    static constexpr int columns = 8;

    explicit EmojiPicker(QWidget *parent);

    std::function<void(const QString &)> onPick;

    // Shows the grid above `anchor` (the parent's coordinates), or below it
    // when there is no room above, kept inside the parent.
    void showNear(const QRectF &anchor);

    static const QStringList &emoji();
    const QList<QToolButton *> &buttons() const { return m_buttons; }

private:
    QList<QToolButton *> m_buttons;
};
