#include "appbase/DockPresence.h"

#include <QCoreApplication>
#include <QMetaObject>

DockPresence::DockPresence(std::function<void(bool)> apply)
    : m_apply(std::move(apply))
{
}

void DockPresence::windowOpened()
{
    ++m_openWindows;
    if (m_openWindows == 1 && !m_present) {
        m_present = true;
        if (m_apply)
            m_apply(true);
    }
}

void DockPresence::windowClosed()
{
    if (m_openWindows > 0)
        --m_openWindows;
    update();
}

void DockPresence::update()
{
    QMetaObject::invokeMethod(QCoreApplication::instance(), [this] { updateNow(); }, Qt::QueuedConnection);
}

void DockPresence::updateNow()
{
    if (m_openWindows != 0)
        return;
    if (keeps && keeps())
        return;
    if (!m_present)
        return;
    m_present = false;
    if (m_apply)
        m_apply(false);
}
