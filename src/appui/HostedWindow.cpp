#include "appui/HostedWindow.h"

#include "appbase/DockPresence.h"
#include "settings/SettingsStorage.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// A saved frame counts as on screen when this much of it is on one display,
// enough to take hold of it again.
constexpr int minimumVisibleSide = 48;
constexpr int saveDelayMs = 400;

bool isOnSomeScreen(const QRect &frame)
{
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        const QRect shared = frame.intersected(screen->availableGeometry());
        if (shared.width() >= minimumVisibleSide && shared.height() >= minimumVisibleSide)
            return true;
    }
    return false;
}

QScreen *screenUnderPointer()
{
    if (QScreen *screen = QGuiApplication::screenAt(QCursor::pos()))
        return screen;
    return QGuiApplication::primaryScreen();
}

} // namespace

HostedWindow::HostedWindow(DockPresence &dock, SettingsStorage *frames, Config config,
                           std::function<QWidget *()> makeContent, QObject *parent)
    : QObject(parent)
    , m_dock(dock)
    , m_frames(frames)
    , m_config(std::move(config))
    , m_makeContent(std::move(makeContent))
{
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(saveDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, &HostedWindow::saveFrame);
}

HostedWindow::~HostedWindow()
{
    if (!m_window)
        return;
    if (m_open) {
        saveFrame();
        m_open = false;
        m_dock.windowClosed();
    }
    m_window->removeEventFilter(this);
    delete m_window;
}

QString HostedWindow::frameKey(const QString &autosaveName)
{
    return QStringLiteral("windowFrame/") + autosaveName;
}

QString HostedWindow::frameText(const QRect &frame)
{
    return QStringLiteral("%1 %2 %3 %4").arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height());
}

QRect HostedWindow::frameFromText(const QString &text)
{
    const QStringList parts = text.split(u' ', Qt::SkipEmptyParts);
    if (parts.size() != 4)
        return {};
    int values[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        values[i] = parts[i].toInt(&ok);
        if (!ok)
            return {};
    }
    const QRect frame(values[0], values[1], values[2], values[3]);
    return frame.isValid() ? frame : QRect();
}

void HostedWindow::show()
{
    if (m_open) {
        bringForward();
        return;
    }
    if (!m_window)
        create();
    open();
}

void HostedWindow::create()
{
    Qt::WindowFlags flags = Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
        | Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint;
    if (m_config.resizable)
        flags |= Qt::WindowMaximizeButtonHint;
    m_window = new QWidget(nullptr, flags);
    m_window->setWindowTitle(m_config.title);
    m_window->setAttribute(Qt::WA_ShowWithoutActivating, m_config.opensUnfocused);
    auto *layout = new QVBoxLayout(m_window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    if (m_makeContent) {
        if (QWidget *content = m_makeContent())
            layout->addWidget(content);
    }
    // The layout would otherwise size the window from its content.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    if (m_config.resizable)
        m_window->setMinimumSize(m_config.size);
    else
        m_window->setFixedSize(m_config.size);
    m_window->resize(m_config.size);
    m_window->installEventFilter(this);
}

void HostedWindow::open()
{
    place();
    m_shownBefore = true;
    m_open = true;
    m_dock.windowOpened();
    m_window->show();
    if (!m_config.opensUnfocused)
        bringForward();
}

void HostedWindow::bringForward()
{
    if (m_window->isMinimized())
        m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->raise();
    if (!m_config.opensUnfocused)
        m_window->activateWindow();
}

void HostedWindow::place()
{
    const QRect saved = savedFrame();
    if (saved.isValid() && isOnSomeScreen(saved)) {
        QSize size = m_config.resizable ? saved.size().expandedTo(m_config.size) : m_config.size;
        m_window->setGeometry(QRect(saved.topLeft(), size));
        return;
    }
    // Nothing kept between runs: a window shown before opens where it was left.
    if (m_shownBefore)
        return;
    const QScreen *screen = screenUnderPointer();
    if (!screen)
        return;
    const QRect available = screen->availableGeometry();
    QRect frame(QPoint(), m_window->size());
    frame.moveCenter(available.center());
    // A window taller or wider than the screen keeps its title bar on it.
    frame.moveTopLeft(QPoint(std::max(frame.left(), available.left()), std::max(frame.top(), available.top())));
    m_window->setGeometry(frame);
}

QRect HostedWindow::savedFrame() const
{
    if (!m_frames || m_config.autosaveName.isEmpty())
        return {};
    const QString key = frameKey(m_config.autosaveName);
    if (!m_frames->contains(key))
        return {};
    return frameFromText(m_frames->value(key).toString());
}

void HostedWindow::saveFrame()
{
    m_saveTimer.stop();
    if (!m_frames || m_config.autosaveName.isEmpty() || !m_window)
        return;
    const QRect frame = m_window->isMaximized() || m_window->isFullScreen() ? m_window->normalGeometry()
                                                                             : m_window->geometry();
    if (!frame.isValid())
        return;
    const QString text = frameText(frame);
    const QString key = frameKey(m_config.autosaveName);
    if (m_frames->contains(key) && m_frames->value(key).toString() == text)
        return;
    m_frames->setValue(key, text);
}

void HostedWindow::closed()
{
    m_open = false;
    m_dock.windowClosed();
    if (onClose)
        onClose();
}

bool HostedWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window)
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
        if (m_open && m_window->isVisible())
            m_saveTimer.start();
        break;
    case QEvent::Close:
        if (m_open)
            saveFrame();
        break;
    case QEvent::Hide:
        // A hide from the window system is a minimise; the window stays open.
        if (m_open && !event->spontaneous()) {
            saveFrame();
            closed();
        }
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
