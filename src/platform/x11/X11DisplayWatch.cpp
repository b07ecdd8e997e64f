#include "platform/x11/X11DisplayWatch.h"

#include <QLoggingCategory>
#include <QSocketNotifier>

#include <xcb/dpms.h>
#include <xcb/randr.h>
#include <xcb/screensaver.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

Q_DECLARE_LOGGING_CATEGORY(lcStream)

namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T *raw)
{
    return {raw, &std::free};
}

} // namespace

X11DisplayWatch::X11DisplayWatch(QByteArray displayName, int powerPollMs) : m_displayName(std::move(displayName))
{
    m_powerPoll.setInterval(powerPollMs);
    connect(&m_powerPoll, &QTimer::timeout, this, &X11DisplayWatch::checkPower);
}

X11DisplayWatch::~X11DisplayWatch()
{
    stop();
}

void X11DisplayWatch::start(std::function<void(Reason)> onEvent)
{
    stop();
    m_onEvent = std::move(onEvent);
    m_c = xcb_connect(m_displayName.isEmpty() ? nullptr : m_displayName.constData(), nullptr);
    if (xcb_connection_has_error(m_c)) {
        xcb_disconnect(m_c);
        m_c = nullptr;
        return;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data->root;

    if (const auto *randr = xcb_get_extension_data(m_c, &xcb_randr_id); randr && randr->present) {
        if (auto version = owned(xcb_randr_query_version_reply(m_c, xcb_randr_query_version(m_c, 1, 2), nullptr))) {
            xcb_randr_select_input(m_c, root,
                                   XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                       XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
            m_randrEvent = randr->first_event;
        }
    }
    if (const auto *saver = xcb_get_extension_data(m_c, &xcb_screensaver_id); saver && saver->present) {
        if (auto version =
                owned(xcb_screensaver_query_version_reply(m_c, xcb_screensaver_query_version(m_c, 1, 1), nullptr))) {
            xcb_screensaver_select_input(m_c, root, XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
            m_saverEvent = saver->first_event;
        }
    }
    if (const auto *dpms = xcb_get_extension_data(m_c, &xcb_dpms_id); dpms && dpms->present) {
        m_dpms = true;
        m_powerPoll.start();
    }
    xcb_flush(m_c);
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_c), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11DisplayWatch::readEvents);
}

void X11DisplayWatch::stop()
{
    m_powerPoll.stop();
    if (m_notifier) {
        // The notifier may be the caller right now.
        m_notifier->setEnabled(false);
        m_notifier.release()->deleteLater();
    }
    if (m_c)
        xcb_disconnect(m_c);
    m_c = nullptr;
    m_onEvent = {};
    m_randrEvent = -1;
    m_saverEvent = -1;
    m_dpms = false;
}

void X11DisplayWatch::tell(Reason reason)
{
    if (m_onEvent)
        m_onEvent(reason);
}

void X11DisplayWatch::readEvents()
{
    if (!m_c)
        return;
    while (xcb_generic_event_t *raw = xcb_poll_for_event(m_c)) {
        const auto event = owned(raw);
        const int type = event->response_type & 0x7f;
        if (m_randrEvent >= 0 && (type == m_randrEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY || type == m_randrEvent + XCB_RANDR_NOTIFY)) {
            tell(Reason::displaysChanged);
            return;
        }
        if (m_saverEvent >= 0 && type == m_saverEvent + XCB_SCREENSAVER_NOTIFY) {
            const auto *notify = reinterpret_cast<const xcb_screensaver_notify_event_t *>(event.get());
            if (notify->state == XCB_SCREENSAVER_STATE_ON || notify->state == XCB_SCREENSAVER_STATE_CYCLE) {
                tell(Reason::screensAsleep);
                return;
            }
        }
    }
    if (xcb_connection_has_error(m_c)) {
        qCInfo(lcStream, "display watch: the connection to the X server was lost");
        m_notifier.reset();
    }
}

void X11DisplayWatch::checkPower()
{
    if (!m_c)
        return;
    auto info = owned(xcb_dpms_info_reply(m_c, xcb_dpms_info(m_c), nullptr));
    if (info && info->state && info->power_level != XCB_DPMS_DPMS_MODE_ON)
        tell(Reason::screensAsleep);
}
