#include "platform/x11/X11KeyGrabber.h"

#include "platform/x11/X11Connection.h"
#include "settings/KeyTable.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <vector>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

Q_LOGGING_CATEGORY(lcKeyGrabber, "glimpso.X11KeyGrabber", QtInfoMsg)

namespace {

constexpr xcb_keysym_t XK_Num_Lock = 0xff7f, XK_Alt_L = 0xffe9, XK_Alt_R = 0xffea, XK_Super_L = 0xffeb,
                       XK_Super_R = 0xffec;
constexpr uint8_t badAccess = 10;

struct FreeDeleter
{
    void operator()(void *p) const { std::free(p); }
};
template <typename T> using Reply = std::unique_ptr<T, FreeDeleter>;

struct SymbolsDeleter
{
    void operator()(xcb_key_symbols_t *s) const { xcb_key_symbols_free(s); }
};

} // namespace

struct X11KeyGrabber::State
{
    struct Grab
    {
        Hotkey hotkey;
        uint16_t modifiers = 0;
        std::vector<xcb_keycode_t> keycodes;
    };

    X11Connection connection;
    xcb_connection_t *c = nullptr;
    xcb_window_t root = XCB_NONE;
    std::unique_ptr<xcb_key_symbols_t, SymbolsDeleter> symbols;
    std::unique_ptr<QSocketNotifier> notifier;
    std::map<int, Grab> grabs;
    // Which of Mod1..Mod5 each key sits on in this server's modifier map.
    uint16_t numLock = XCB_MOD_MASK_2;
    uint16_t alt = XCB_MOD_MASK_1;
    uint16_t super = XCB_MOD_MASK_4;

    explicit State(QByteArray displayName)
        : connection(std::move(displayName))
    { }

    std::vector<xcb_keycode_t> keycodesOf(xcb_keysym_t keysym) const
    {
        std::vector<xcb_keycode_t> out;
        Reply<xcb_keycode_t> codes(xcb_key_symbols_get_keycode(symbols.get(), keysym));
        for (const xcb_keycode_t *k = codes.get(); k && *k != XCB_NO_SYMBOL; ++k) {
            if (std::find(out.begin(), out.end(), *k) == out.end())
                out.push_back(*k);
        }
        return out;
    }

    void readModifierMap()
    {
        Reply<xcb_get_modifier_mapping_reply_t> map(
            xcb_get_modifier_mapping_reply(c, xcb_get_modifier_mapping(c), nullptr));
        if (!map)
            return;
        const int perModifier = map->keycodes_per_modifier;
        const xcb_keycode_t *keys = xcb_get_modifier_mapping_keycodes(map.get());
        auto maskOf = [&](std::initializer_list<xcb_keysym_t> keysyms, uint16_t fallback) -> uint16_t {
            for (xcb_keysym_t keysym : keysyms) {
                for (xcb_keycode_t code : keycodesOf(keysym)) {
                    for (int modifier = 3; modifier < 8; ++modifier) { // Mod1..Mod5
                        for (int i = 0; i < perModifier; ++i) {
                            if (keys[modifier * perModifier + i] == code)
                                return uint16_t(1u << modifier);
                        }
                    }
                }
            }
            return fallback;
        };
        numLock = maskOf({ XK_Num_Lock }, XCB_MOD_MASK_2);
        alt = maskOf({ XK_Alt_L, XK_Alt_R }, XCB_MOD_MASK_1);
        super = maskOf({ XK_Super_L, XK_Super_R }, XCB_MOD_MASK_4);
    }

    uint16_t modifiersOf(const Hotkey &hotkey) const
    {
        uint16_t mods = 0;
        if (hotkey.modifierFlagsRaw & Hotkey::commandFlag)
            mods |= XCB_MOD_MASK_CONTROL;
        if (hotkey.modifierFlagsRaw & Hotkey::optionFlag)
            mods |= alt;
        if (hotkey.modifierFlagsRaw & Hotkey::shiftFlag)
            mods |= XCB_MOD_MASK_SHIFT;
        if (hotkey.modifierFlagsRaw & Hotkey::controlFlag)
            mods |= super;
        return mods;
    }

    std::array<uint16_t, 4> lockVariants() const
    {
        return { 0, XCB_MOD_MASK_LOCK, numLock, uint16_t(XCB_MOD_MASK_LOCK | numLock) };
    }

    void ungrabKeys(const Grab &grab)
    {
        for (xcb_keycode_t code : grab.keycodes) {
            for (uint16_t extra : lockVariants())
                xcb_ungrab_key(c, code, root, grab.modifiers | extra);
        }
        // A round trip: once this returns the server has let go, so another
        // program that asks next gets the combination.
        [[maybe_unused]] const Reply<xcb_get_input_focus_reply_t> focus(
            xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    }

    // Every variant of every key, checked; the first refusal undoes the rest.
    GlobalKeyGrabber::Result grabKeys(Grab &grab)
    {
        const KeyTableEntry *entry = KeyTable::byCode(grab.hotkey.keyCode);
        if (!entry)
            return { GlobalKeyGrabber::Result::unknownKey, QStringLiteral("no such key") };
        grab.modifiers = modifiersOf(grab.hotkey);
        grab.keycodes = keycodesOf(entry->keysym);
        if (grab.keycodes.empty())
            return { GlobalKeyGrabber::Result::noKeyOnKeyboard,
                QStringLiteral("the keyboard map has no such key") };
        std::vector<xcb_void_cookie_t> cookies;
        for (xcb_keycode_t code : grab.keycodes) {
            for (uint16_t extra : lockVariants()) {
                cookies.push_back(xcb_grab_key_checked(
                    c, 0, root, grab.modifiers | extra, code, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
            }
        }
        int status = 0;
        for (xcb_void_cookie_t cookie : cookies) {
            Reply<xcb_generic_error_t> error(xcb_request_check(c, cookie));
            if (error && status == 0)
                status = error->error_code;
        }
        if (status != 0) {
            ungrabKeys(grab);
            return { status,
                status == badAccess ? QStringLiteral("another program holds this combination")
                                    : QStringLiteral("the X server refused the grab") };
        }
        return {};
    }
};

X11KeyGrabber::X11KeyGrabber(QByteArray displayName, QObject *parent)
    : GlobalKeyGrabber(parent)
    , m_state(std::make_unique<State>(std::move(displayName)))
{
    State &s = *m_state;
    s.c = s.connection.get();
    if (!s.c)
        return;
    const xcb_setup_t *setup = xcb_get_setup(s.c);
    const xcb_screen_iterator_t screen = xcb_setup_roots_iterator(setup);
    s.root = screen.data->root;
    s.symbols.reset(xcb_key_symbols_alloc(s.c));
    s.readModifierMap();
    s.notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(s.c), QSocketNotifier::Read);
    connect(s.notifier.get(), &QSocketNotifier::activated, this, &X11KeyGrabber::readEvents);
}

X11KeyGrabber::~X11KeyGrabber()
{
    if (m_state->c && !xcb_connection_has_error(m_state->c)) {
        for (const auto &[id, grab] : m_state->grabs)
            m_state->ungrabKeys(grab);
    }
}

bool X11KeyGrabber::isConnected() const
{
    return m_state->c && !xcb_connection_has_error(m_state->c);
}

GlobalKeyGrabber::Result X11KeyGrabber::grab(int id, const Hotkey &hotkey)
{
    if (!isConnected())
        return { Result::noConnection, QStringLiteral("no connection to the X server") };
    ungrab(id);
    State::Grab grab { hotkey, 0, {} };
    const Result result = m_state->grabKeys(grab);
    if (result.ok())
        m_state->grabs[id] = std::move(grab);
    // The round trips may have queued events the socket will not announce again.
    QMetaObject::invokeMethod(this, &X11KeyGrabber::readEvents, Qt::QueuedConnection);
    return result;
}

void X11KeyGrabber::ungrab(int id)
{
    const auto it = m_state->grabs.find(id);
    if (it == m_state->grabs.end())
        return;
    if (isConnected())
        m_state->ungrabKeys(it->second);
    m_state->grabs.erase(it);
}

std::optional<uint16_t> X11KeyGrabber::keyCodeForScanCode(quint32 nativeScanCode) const
{
    if (!m_state->symbols || nativeScanCode > 255)
        return std::nullopt;
    const xcb_keysym_t keysym
        = xcb_key_symbols_get_keysym(m_state->symbols.get(), xcb_keycode_t(nativeScanCode), 0);
    if (const KeyTableEntry *entry = KeyTable::byKeysym(keysym))
        return entry->code;
    return std::nullopt;
}

void X11KeyGrabber::readEvents()
{
    State &s = *m_state;
    if (!isConnected()) {
        if (s.notifier && s.notifier->isEnabled()) {
            s.notifier->setEnabled(false);
            qCCritical(lcKeyGrabber, "the X server closed the connection; global shortcuts stop working");
        }
        return;
    }
    bool mapChanged = false;
    while (Reply<xcb_generic_event_t> event { xcb_poll_for_event(s.c) }) {
        switch (event->response_type & ~0x80) {
        case XCB_KEY_PRESS: {
            const auto *press = reinterpret_cast<const xcb_key_press_event_t *>(event.get());
            // Only the modifiers a shortcut can hold; NumLock and CapsLock are
            // whatever they happen to be.
            const uint16_t relevant = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT | s.alt | s.super;
            const uint16_t held = press->state & relevant;
            for (const auto &[id, grab] : s.grabs) {
                if (grab.modifiers == held
                    && std::find(grab.keycodes.begin(), grab.keycodes.end(), press->detail)
                        != grab.keycodes.end()) {
                    Q_EMIT pressed(id);
                    break;
                }
            }
            break;
        }
        case XCB_MAPPING_NOTIFY: {
            auto *mapping = reinterpret_cast<xcb_mapping_notify_event_t *>(event.get());
            if (mapping->request != XCB_MAPPING_POINTER) {
                xcb_refresh_keyboard_mapping(s.symbols.get(), mapping);
                mapChanged = true;
            }
            break;
        }
        default:
            break;
        }
    }
    if (mapChanged)
        keyboardMapChanged();
}

void X11KeyGrabber::keyboardMapChanged()
{
    State &s = *m_state;
    // The old keycodes go with the old map; the same keys are looked up again.
    for (const auto &[id, grab] : s.grabs)
        s.ungrabKeys(grab);
    s.readModifierMap();
    std::vector<std::pair<int, Result>> lost;
    for (auto it = s.grabs.begin(); it != s.grabs.end();) {
        const Result result = s.grabKeys(it->second);
        if (result.ok()) {
            ++it;
            continue;
        }
        lost.emplace_back(it->first, result);
        it = s.grabs.erase(it);
    }
    qCInfo(lcKeyGrabber, "keyboard map changed; %lld shortcut(s) grabbed again", qlonglong(s.grabs.size()));
    QMetaObject::invokeMethod(this, &X11KeyGrabber::readEvents, Qt::QueuedConnection);
    for (const auto &[id, result] : lost)
        Q_EMIT grabLost(id, result.status, result.reason);
}
