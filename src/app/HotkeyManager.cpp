#include "app/HotkeyManager.h"

#include "app/CaptureCoordinator.h"
#include "appbase/InProcessNotices.h"
#include "settings/AppSettings.h"
#include "settings/GlobalKeyGrabber.h"
#include "settingsui/RecorderView.h"

#include <QApplication>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <algorithm>
#include <array>

Q_LOGGING_CATEGORY(lcHotkeys, "glimpso.HotkeyManager", QtInfoMsg)

namespace {

using ID = HotkeyManager::HotkeyID;

// The order of registration. Two settings holding one combination: the later
// one fails, so this order decides which of them works.
constexpr std::array kRegistrationOrder = { ID::region, ID::allDisplays, ID::text, ID::window, ID::gifWindow,
    ID::gifScreen, ID::videoWindow, ID::videoScreen, ID::history, ID::gif, ID::video };

// The ones glimpso's own windows answer to when no popup is open.
constexpr std::array kLocalOrder = { ID::region, ID::allDisplays };

const Hotkey kEscape { 53, 0 };

bool isKnown(int id)
{
    return id >= int(ID::region) && id <= int(ID::videoScreen);
}

} // namespace

HotkeyManager::HotkeyManager(
    Actions actions, AppSettings &settings, GlobalKeyGrabber &grabber, QObject *parent)
    : QObject(parent)
    , m_actions(std::move(actions))
    , m_settings(settings)
    , m_grabber(grabber)
{ }

HotkeyManager::~HotkeyManager()
{
    unregisterHotkeys();
}

HotkeyManager::Actions HotkeyManager::coordinatorActions(CaptureCoordinator &coordinator)
{
    QPointer<CaptureCoordinator> weak(&coordinator);
    Actions actions;
    actions.captureRegion = [weak](bool allDisplays, CaptureIntent intent) {
        if (weak)
            weak->captureRegion(allDisplays, intent);
    };
    actions.captureWindow = [weak] {
        if (weak)
            weak->captureWindow();
    };
    return actions;
}

QString HotkeyManager::settingName(HotkeyID id)
{
    switch (id) {
    case ID::region:
        return QStringLiteral("hotkeyRegion");
    case ID::allDisplays:
        return QStringLiteral("hotkeyAllDisplays");
    case ID::escape:
        return QStringLiteral("escape");
    case ID::text:
        return QStringLiteral("hotkeyText");
    case ID::history:
        return QStringLiteral("hotkeyHistory");
    case ID::gif:
        return QStringLiteral("hotkeyGIF");
    case ID::video:
        return QStringLiteral("hotkeyVideo");
    case ID::window:
        return QStringLiteral("hotkeyWindow");
    case ID::gifWindow:
        return QStringLiteral("hotkeyGIFWindow");
    case ID::gifScreen:
        return QStringLiteral("hotkeyGIFScreen");
    case ID::videoWindow:
        return QStringLiteral("hotkeyVideoWindow");
    case ID::videoScreen:
        return QStringLiteral("hotkeyVideoScreen");
    }
    return {};
}

std::optional<Hotkey> HotkeyManager::settingHotkey(HotkeyID id) const
{
    switch (id) {
    case ID::region:
        return m_settings.hotkeyRegion();
    case ID::allDisplays:
        return m_settings.hotkeyAllDisplays();
    case ID::escape:
        return std::nullopt;
    case ID::text:
        return m_settings.hotkeyText();
    case ID::history:
        return m_settings.hotkeyHistory();
    case ID::gif:
        return m_settings.hotkeyGIF();
    case ID::video:
        return m_settings.hotkeyVideo();
    case ID::window:
        return m_settings.hotkeyWindow();
    case ID::gifWindow:
        return m_settings.hotkeyGIFWindow();
    case ID::gifScreen:
        return m_settings.hotkeyGIFScreen();
    case ID::videoWindow:
        return m_settings.hotkeyVideoWindow();
    case ID::videoScreen:
        return m_settings.hotkeyVideoScreen();
    }
    return std::nullopt;
}

void HotkeyManager::registerHotkeys()
{
    if (m_started)
        return;
    m_started = true;
    qCInfo(lcHotkeys, "global key grabber installed: %s", qUtf8Printable(m_grabber.name()));

    m_connections << connect(&m_grabber, &GlobalKeyGrabber::pressed, this, &HotkeyManager::fire);
    m_connections << connect(&m_grabber, &GlobalKeyGrabber::grabLost, this, &HotkeyManager::grabLost);
    // glimpso's own windows: the grabs cover them too, but a refused grab or a
    // desktop without grabs still leaves the two capture shortcuts working
    // there, and a popup menu's keyboard grab would otherwise swallow them all.
    if (QCoreApplication *app = QCoreApplication::instance())
        app->installEventFilter(this);

    registerAll();

    m_connections << connect(&m_settings, &AppSettings::hotkeysChanged, this, [this] {
        qCInfo(lcHotkeys, "hotkey settings changed; re-registering");
        registerAll();
    });
    InProcessNotices &notices = InProcessNotices::instance();
    m_connections << connect(
        &notices, &InProcessNotices::overlayDidPresent, this, &HotkeyManager::overlayPresented);
    m_connections << connect(
        &notices, &InProcessNotices::overlayDidDismiss, this, &HotkeyManager::overlayDismissed);
}

void HotkeyManager::unregisterHotkeys()
{
    if (!m_started)
        return;
    m_started = false;
    if (QCoreApplication *app = QCoreApplication::instance())
        app->removeEventFilter(this);
    for (const QMetaObject::Connection &connection : std::as_const(m_connections))
        disconnect(connection);
    m_connections.clear();
    for (const auto &[id, hotkey] : m_registered)
        m_grabber.ungrab(id);
    m_registered.clear();
    m_overlayUp = false;
    qCInfo(lcHotkeys, "global hotkeys unregistered");
}

void HotkeyManager::registerAll()
{
    for (auto it = m_registered.begin(); it != m_registered.end();) {
        // Escape belongs to the overlay's lifetime, not to the settings.
        if (it->first == int(ID::escape)) {
            ++it;
            continue;
        }
        m_grabber.ungrab(it->first);
        it = m_registered.erase(it);
    }
    m_failures.erase(std::remove_if(m_failures.begin(), m_failures.end(),
                         [](const Failure &f) { return f.id != int(ID::escape); }),
        m_failures.end());
    for (ID id : kRegistrationOrder)
        grabOne(id, *settingHotkey(id));
}

void HotkeyManager::grabOne(HotkeyID id, const Hotkey &hotkey)
{
    if (!hotkey.isAssigned())
        return;
    const unsigned number = unsigned(id);
    const GlobalKeyGrabber::Result result = m_grabber.grab(int(id), hotkey);
    if (!result.ok()) {
        // No retry and nothing shown: the shortcut just doesn't work, and the
        // settings page can tell which ones from failures().
        qCCritical(lcHotkeys, "RegisterEventHotKey failed for %u: status=%d (%s %s: %s)", number,
            result.status, qUtf8Printable(settingName(id)), qUtf8Printable(hotkey.displayString()),
            qUtf8Printable(result.reason));
        m_failures.push_back({ int(id), hotkey, result.status, result.reason });
        return;
    }
    m_registered[int(id)] = hotkey;
    qCInfo(lcHotkeys, "registered %u → %s", number, qUtf8Printable(hotkey.displayString()));
}

void HotkeyManager::ungrabOne(HotkeyID id)
{
    const auto it = m_registered.find(int(id));
    if (it == m_registered.end())
        return;
    m_registered.erase(it);
    m_grabber.ungrab(int(id));
    qCInfo(lcHotkeys, "unregistered %u", unsigned(id));
}

void HotkeyManager::grabLost(int id, int status, const QString &reason)
{
    const auto it = m_registered.find(id);
    if (it == m_registered.end())
        return;
    const Hotkey hotkey = it->second;
    m_registered.erase(it);
    qCCritical(lcHotkeys, "RegisterEventHotKey failed for %u: status=%d (%s %s after a keyboard change: %s)",
        unsigned(id), status, qUtf8Printable(settingName(HotkeyID(id))),
        qUtf8Printable(hotkey.displayString()), qUtf8Printable(reason));
    m_failures.push_back({ id, hotkey, status, reason });
}

void HotkeyManager::overlayPresented()
{
    m_overlayUp = true;
    m_failures.erase(std::remove_if(m_failures.begin(), m_failures.end(),
                         [](const Failure &f) { return f.id == int(ID::escape); }),
        m_failures.end());
    grabOne(ID::escape, kEscape);
}

void HotkeyManager::overlayDismissed()
{
    m_overlayUp = false;
    ungrabOne(ID::escape);
}

void HotkeyManager::fire(int id)
{
    if (!isKnown(id))
        return;
    qCInfo(lcHotkeys, "hot key fired: %u", unsigned(id));
    const ID which = ID(id);
    if (which == ID::escape) {
        Q_EMIT InProcessNotices::instance().overlayEscape();
        return;
    }
    Q_EMIT InProcessNotices::instance().hotkeyWillFire();
    closeOpenMenus();

    auto nothing = [id] { qCInfo(lcHotkeys, "hot key %d: nothing in this build acts on it yet", id); };
    auto record = [&](CaptureKind kind, RecordingTarget target, const QString &prompt) {
        if (m_actions.startRecording)
            m_actions.startRecording(kind, target, prompt);
        else
            nothing();
    };
    switch (which) {
    case ID::region:
    case ID::allDisplays:
    case ID::text:
        if (m_actions.captureRegion)
            m_actions.captureRegion(
                which == ID::allDisplays, which == ID::text ? CaptureIntent::text : CaptureIntent::image);
        else
            nothing();
        break;
    case ID::history:
        m_actions.toggleHistory ? m_actions.toggleHistory() : nothing();
        break;
    case ID::gif:
        record(CaptureKind::gif, RecordingTarget::area, QStringLiteral("Drag over what to record as a GIF"));
        break;
    case ID::video:
        record(
            CaptureKind::video, RecordingTarget::area, QStringLiteral("Drag over what to record as a video"));
        break;
    case ID::window:
        m_actions.captureWindow ? m_actions.captureWindow() : nothing();
        break;
    case ID::gifWindow:
        record(CaptureKind::gif, RecordingTarget::window, {});
        break;
    case ID::gifScreen:
        record(CaptureKind::gif, RecordingTarget::screen, {});
        break;
    case ID::videoWindow:
        record(CaptureKind::video, RecordingTarget::window, {});
        break;
    case ID::videoScreen:
        record(CaptureKind::video, RecordingTarget::screen, {});
        break;
    case ID::escape:
        break;
    }
}

bool HotkeyManager::matchAndFire(const Hotkey &pressed, bool popupOpen)
{
    if (!pressed.isAssigned())
        return false;
    if (popupOpen) {
        for (ID id : kRegistrationOrder) {
            const Hotkey hotkey = *settingHotkey(id);
            if (hotkey.isAssigned() && hotkey == pressed) {
                fire(int(id));
                return true;
            }
        }
        return false;
    }
    for (ID id : kLocalOrder) {
        const Hotkey hotkey = *settingHotkey(id);
        // Exactly the setting's modifiers: an extra one is another shortcut.
        if (!hotkey.isAssigned() || hotkey != pressed)
            continue;
        if (m_actions.captureRegion)
            m_actions.captureRegion(id == ID::allDisplays, CaptureIntent::image);
        return true;
    }
    return false;
}

Hotkey HotkeyManager::pressedHotkey(const QKeyEvent &event) const
{
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    // The display server's own map knows the key under the character; Qt's
    // key is the fallback where it has no say.
    if (const auto code = m_grabber.keyCodeForScanCode(event.nativeScanCode()))
        return Hotkey::withModifiers(*code, modifiers);
    return Hotkey::fromKeyEvent(event.key(), modifiers).value_or(Hotkey::unassigned());
}

bool HotkeyManager::eventFilter(QObject *, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    // A shortcut recorder that is listening wants the very keys of the
    // shortcuts; it holds the keyboard, so the grabs stay quiet too.
    if (const QWidget *focus = QApplication::focusWidget();
        focus && focus->property(RecorderView::listeningProperty).toBool())
        return false;
    // The press reaches the window first, then its widgets; a match on the
    // first stops it, a miss is the same miss on the others.
    const auto *keyEvent = static_cast<QKeyEvent *>(event);
    const bool popupOpen = QApplication::activePopupWidget() != nullptr;
    return matchAndFire(pressedHotkey(*keyEvent), popupOpen);
}

void HotkeyManager::closeOpenMenus()
{
    // Innermost first; the tray's menu is left to the tray, which may keep it
    // open (keepMenuOpenDuringCapture).
    while (QWidget *popup = QApplication::activePopupWidget()) {
        if (popup == m_statusMenu)
            break;
        popup->close();
        if (QApplication::activePopupWidget() == popup)
            break;
    }
}
