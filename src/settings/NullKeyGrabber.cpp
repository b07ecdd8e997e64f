#include "settings/NullKeyGrabber.h"

NullKeyGrabber::NullKeyGrabber(QString why, QObject *parent)
    : GlobalKeyGrabber(parent)
    , m_why(std::move(why))
{ }

GlobalKeyGrabber::Result NullKeyGrabber::grab(int, const Hotkey &)
{
    return { Result::noConnection, m_why };
}
