#include "app/CommandRouter.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcCommandRouter, "glimpso.CommandRouter", QtInfoMsg)

void CommandRouter::add(const QString &verb, Handler handler)
{
    m_handlers[verb] = std::move(handler);
}

bool CommandRouter::handles(const QString &verb) const
{
    return m_handlers.count(verb) != 0;
}

CommandRouter::Reply CommandRouter::handle(const QStringList &arguments) const
{
    if (arguments.isEmpty())
        return {2, {}, QStringLiteral("glimpso: no command given")};
    const auto it = m_handlers.find(arguments.first());
    if (it == m_handlers.end())
        return {2, {}, QStringLiteral("glimpso: the running copy does not know '%1'").arg(arguments.first())};
    qCInfo(lcCommandRouter) << "command:" << arguments.join(u' ');
    return it->second(arguments.mid(1));
}
