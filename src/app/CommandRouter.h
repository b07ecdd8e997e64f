#pragma once

#include "appbase/InstanceChannel.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <map>

// Inside the running copy: the verbs that arrive from the command line, each
// with the handler its subsystem registered.
class CommandRouter
{
public:
    using Reply = InstanceChannel::Reply;
    using Handler = std::function<Reply(const QStringList &arguments)>;

    void add(const QString &verb, Handler handler);
    bool handles(const QString &verb) const;
    Reply handle(const QStringList &arguments) const;

private:
    std::map<QString, Handler> m_handlers;
};
