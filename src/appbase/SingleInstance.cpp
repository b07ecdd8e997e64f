#include "appbase/SingleInstance.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcSingleInstance, "glimpso.SingleInstance", QtInfoMsg)

SingleInstance::SingleInstance(InstanceChannel &channel, qint64 processId, std::function<void()> quitApplication)
    : m_channel(channel)
    , m_processId(QString::number(processId))
    , m_quitApplication(std::move(quitApplication))
{
}

bool SingleInstance::handOffToRunningCopy()
{
    if (m_channel.otherCopies().isEmpty())
        return false;
    qCInfo(lcSingleInstance) << "another copy is running; handing off over" << m_channel.name();
    m_channel.postHandOff();
    return true;
}

void SingleInstance::onHandOff(std::function<void()> action)
{
    if (m_observingHandOff)
        return;
    m_observingHandOff = true;
    m_channel.observeHandOff(std::move(action));
}

void SingleInstance::claim()
{
    if (m_claimed)
        return;
    m_claimed = true;
    m_channel.postClaim(m_processId);
    m_channel.observeClaim([this](const QString &claimant) {
        if (!claimant.isEmpty() && claimant != m_processId) {
            qCInfo(lcSingleInstance) << "replaced by a newer copy, process" << claimant;
            m_quitApplication();
        }
    });
    // Copies that predate the claim message still understand a plain request to quit.
    for (const QString &copy : m_channel.otherCopies())
        m_channel.askToQuit(copy);
}
