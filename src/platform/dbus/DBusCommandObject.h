#pragma once

#include "appbase/InstanceChannel.h"

#include <QObject>
#include <QStringList>

// The object at /com/tovarine/glimpso: the command line's verbs arrive here as
// com.tovarine.glimpso.Capture.Run(as arguments) -> (i status, s output, s error).
class DBusCommandObject : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.tovarine.glimpso.Capture")

public:
    explicit DBusCommandObject(InstanceChannel::CommandHandler handler, QObject *parent = nullptr);

public Q_SLOTS:
    int Run(const QStringList &arguments, QString &output, QString &error);

private:
    InstanceChannel::CommandHandler m_handler;
};
