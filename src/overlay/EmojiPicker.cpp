#include "overlay/EmojiPicker.h"

#include <QGridLayout>
#include <QToolButton>

#include <algorithm>

namespace {

constexpr int gap = 6;

} // namespace

const QStringList &EmojiPicker::emoji()
{
    static const QStringList all = {
        QStringLiteral("😀"), QStringLiteral("😂"), QStringLiteral("😊"), QStringLiteral("😍"),
        QStringLiteral("😎"), QStringLiteral("🤔"), QStringLiteral("😅"), QStringLiteral("😉"),
        QStringLiteral("🙂"), QStringLiteral("😢"), QStringLiteral("😭"), QStringLiteral("😡"),
        QStringLiteral("😮"), QStringLiteral("😴"), QStringLiteral("🤯"), QStringLiteral("🥳"),
        QStringLiteral("👍"), QStringLiteral("👎"), QStringLiteral("👏"), QStringLiteral("🙏"),
        QStringLiteral("💪"), QStringLiteral("👀"), QStringLiteral("👉"), QStringLiteral("👆"),
        QStringLiteral("✅"), QStringLiteral("❌"), QStringLiteral("⚠️"), QStringLiteral("❗"),
        QStringLiteral("❓"), QStringLiteral("💡"), QStringLiteral("🔥"), QStringLiteral("⭐"),
        QStringLiteral("❤️"), QStringLiteral("💯"), QStringLiteral("🎉"), QStringLiteral("🚀"),
        QStringLiteral("🐛"), QStringLiteral("📌"), QStringLiteral("📎"), QStringLiteral("✏️"),
    };
    return all;
}

EmojiPicker::EmojiPicker(QWidget *parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("emojiPicker"));
    setFocusPolicy(Qt::NoFocus);
    setAutoFillBackground(true);
    setStyleSheet(QStringLiteral("#emojiPicker { background: rgba(30, 30, 30, 235); border-radius: 8px; }"
                                 "QToolButton { border: none; border-radius: 4px; padding: 2px; }"
                                 "QToolButton:hover { background: rgba(255, 255, 255, 40); }"));
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(gap, gap, gap, gap);
    grid->setSpacing(2);
    // The colour face first, where installed; others may draw some emoji in outline.
    QFont face = font();
    face.setFamilies({QStringLiteral("Noto Color Emoji"), face.family()});
    face.setPixelSize(20);
    for (int i = 0; i < emoji().size(); ++i) {
        auto *button = new QToolButton(this);
        button->setText(emoji().at(i));
        button->setFont(face);
        button->setFocusPolicy(Qt::NoFocus);
        button->setAutoRaise(true);
        button->setFixedSize(32, 32);
        connect(button, &QToolButton::clicked, this, [this, i] {
            if (onPick)
                onPick(emoji().at(i));
        });
        grid->addWidget(button, i / columns, i % columns);
        m_buttons.append(button);
    }
    adjustSize();
    hide();
}

void EmojiPicker::showNear(const QRectF &anchor)
{
    const QSize size = sizeHint();
    const QRect room = parentWidget() ? parentWidget()->rect() : QRect(QPoint(0, 0), size);
    int x = int(anchor.center().x()) - size.width() / 2;
    int y = int(anchor.top()) - gap - size.height();
    if (y < room.top())
        y = int(anchor.bottom()) + gap;
    x = std::max(room.left(), std::min(x, room.right() - size.width()));
    y = std::max(room.top(), std::min(y, room.bottom() - size.height()));
    setGeometry(x, y, size.width(), size.height());
    show();
    raise();
}
