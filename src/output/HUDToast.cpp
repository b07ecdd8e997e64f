#include "output/HUDToast.h"

#include <QCursor>
#include <QEvent>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QLabel>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QPropertyAnimation>
#include <QScreen>

#include <algorithm>
#include <chrono>

Q_LOGGING_CATEGORY(lcToast, "glimpso.HUDToast", QtInfoMsg)

namespace {

constexpr int fadeInMs = 150;
constexpr int fadeOutMs = 250;
constexpr int sidePadding = 18;
constexpr int bottomPadding = 9;

QLabel *textLabel(QWidget *parent, const QString &text, const QFont &font, const QColor &colour, int width)
{
    auto *label = new QLabel(parent);
    label->setFont(font);
    label->setText(QFontMetrics(font).elidedText(text, Qt::ElideMiddle, width));
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, colour);
    label->setPalette(palette);
    label->setTextFormat(Qt::PlainText);
    label->adjustSize();
    return label;
}

QScreen *screenUnderPointer()
{
    if (QScreen *screen = QGuiApplication::screenAt(QCursor::pos()))
        return screen;
    if (QScreen *screen = QGuiApplication::primaryScreen())
        return screen;
    const QList<QScreen *> screens = QGuiApplication::screens();
    return screens.isEmpty() ? nullptr : screens.first();
}

} // namespace

HUDToast::HUDToast(QObject *parent) : QObject(parent)
{
    m_dismissTimer.setSingleShot(true);
    connect(&m_dismissTimer, &QTimer::timeout, this, &HUDToast::dismiss);
}

HUDToast::~HUDToast()
{
    delete m_panel;
}

void HUDToast::show(const QString &title, const QString &body, double seconds, std::function<void()> onClick)
{
    m_onClick = std::move(onClick);
    m_dismissTimer.stop();
    // A new toast replaces the old one without a fade.
    if (m_panel) {
        m_panel->hide();
        m_panel->deleteLater();
        m_panel = nullptr;
    }
    QWidget *panel = makePanel(title, body, bool(m_onClick));
    place(panel);
    m_panel = panel;
    qCInfo(lcToast, "toast: %s — %s (%.1fs%s)", qUtf8Printable(title), qUtf8Printable(body), seconds,
           m_onClick ? ", clickable" : "");

    panel->setWindowOpacity(0.0);
    panel->show();
    auto *fadeIn = new QPropertyAnimation(panel, "windowOpacity", panel);
    fadeIn->setDuration(fadeInMs);
    fadeIn->setEndValue(1.0);
    fadeIn->start(QAbstractAnimation::DeleteWhenStopped);

    m_dismissTimer.start(std::chrono::milliseconds(qint64(std::max(seconds, 0.0) * 1000)));
}

QWidget *HUDToast::makePanel(const QString &title, const QString &body, bool clickable) const
{
    Qt::WindowFlags flags = Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                            Qt::WindowDoesNotAcceptFocus;
    if (!clickable)
        flags |= Qt::WindowTransparentForInput;
    auto *panel = new QWidget(nullptr, flags);
    panel->setAttribute(Qt::WA_ShowWithoutActivating);
    panel->setAttribute(Qt::WA_TranslucentBackground);
    panel->setObjectName(QStringLiteral("HUDToast"));
    panel->setStyleSheet(QStringLiteral("#HUDToast { background: transparent; }"
                                        "#HUDToastBackground { background: rgba(0, 0, 0, 209); border-radius: 12px; }"));

    QFont titleFont = panel->font();
    titleFont.setPixelSize(13);
    titleFont.setWeight(QFont::Medium);
    QFont bodyFont = panel->font();
    bodyFont.setPixelSize(12);

    auto *background = new QWidget(panel);
    background->setObjectName(QStringLiteral("HUDToastBackground"));
    QLabel *titleLabel = textLabel(background, title, titleFont, Qt::white, maxTextWidth);
    QLabel *bodyLabel = textLabel(background, body, bodyFont, QColor(255, 255, 255, 191), maxTextWidth);
    titleLabel->setObjectName(QStringLiteral("title"));
    bodyLabel->setObjectName(QStringLiteral("body"));
    arrange(panel, title, body);
    if (clickable) {
        panel->setCursor(Qt::PointingHandCursor);
        for (QWidget *part : {static_cast<QWidget *>(panel), background, static_cast<QWidget *>(titleLabel),
                              static_cast<QWidget *>(bodyLabel)})
            part->installEventFilter(const_cast<HUDToast *>(this));
    }
    return panel;
}

void HUDToast::arrange(QWidget *panel, const QString &title, const QString &body)
{
    auto *background = panel->findChild<QWidget *>(QStringLiteral("HUDToastBackground"));
    auto *titleLabel = panel->findChild<QLabel *>(QStringLiteral("title"));
    auto *bodyLabel = panel->findChild<QLabel *>(QStringLiteral("body"));
    if (!background || !titleLabel || !bodyLabel)
        return;
    // Screen readers and tests find the notice by its words.
    const QString text = body.isEmpty() ? title : title + QStringLiteral(" — ") + body;
    panel->setWindowTitle(QStringLiteral("glimpso notice: ") + text);
    panel->setAccessibleName(text);
    titleLabel->setText(QFontMetrics(titleLabel->font()).elidedText(title, Qt::ElideMiddle, maxTextWidth));
    bodyLabel->setText(QFontMetrics(bodyLabel->font()).elidedText(body, Qt::ElideMiddle, maxTextWidth));
    titleLabel->adjustSize();
    bodyLabel->adjustSize();

    const int textWidth = std::min(std::max(titleLabel->width(), bodyLabel->width()), maxTextWidth);
    const int width = textWidth + 2 * sidePadding;
    const int height = titleLabel->height() + 1 + bodyLabel->height() + 2 * bottomPadding;
    // Top down: the title, one pixel, the message, the padding below.
    titleLabel->setGeometry(sidePadding, bottomPadding, textWidth, titleLabel->height());
    bodyLabel->setGeometry(sidePadding, bottomPadding + titleLabel->height() + 1, textWidth, bodyLabel->height());
    background->setGeometry(0, 0, width, height);
    panel->resize(width, height);
}

void HUDToast::changeText(const QString &title, const QString &body)
{
    if (!m_panel)
        return;
    arrange(m_panel, title, body);
    place(m_panel);
}

void HUDToast::place(QWidget *panel) const
{
    const QScreen *screen = screenUnderPointer();
    if (!screen)
        return;
    const QRect usable = screen->availableGeometry();
    panel->move(usable.right() + 1 - screenMargin - panel->width(), usable.top() + screenMargin);
}

bool HUDToast::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease && m_panel &&
        (watched == m_panel || m_panel->isAncestorOf(qobject_cast<QWidget *>(watched)))) {
        const std::function<void()> onClick = m_onClick;
        qCInfo(lcToast, "toast clicked");
        if (onClick)
            onClick();
        dismiss();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void HUDToast::dismiss()
{
    m_dismissTimer.stop();
    if (!m_panel)
        return;
    QWidget *panel = m_panel;
    auto *fadeOut = new QPropertyAnimation(panel, "windowOpacity", panel);
    fadeOut->setDuration(fadeOutMs);
    fadeOut->setEndValue(0.0);
    QPointer<HUDToast> self(this);
    QPointer<QWidget> fading(panel);
    connect(fadeOut, &QPropertyAnimation::finished, this, [self, fading] {
        if (!fading)
            return;
        fading->hide();
        // Later, and only if it is still the current one: a late fade must
        // not take a newer toast with it.
        QTimer::singleShot(0, self, [self, fading] {
            if (self && fading)
                self->forget(fading);
        });
    });
    fadeOut->start(QAbstractAnimation::DeleteWhenStopped);
}

void HUDToast::forget(QWidget *panel)
{
    if (m_panel == panel) {
        m_panel = nullptr;
        m_onClick = {};
    }
    panel->deleteLater();
}
