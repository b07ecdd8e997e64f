#include "appbase/Logging.h"

#include <QLoggingCategory>
#include <QtGlobal>

namespace Logging {

void setUp(Audience audience)
{
    qSetMessagePattern(QStringLiteral(
        "%{time hh:mm:ss.zzz} %{if-debug}debug%{endif}%{if-info}info%{endif}%{if-warning}warning%{endif}"
        "%{if-critical}error%{endif}%{if-fatal}fatal%{endif} %{category}: %{message}"));
    const QByteArray level = qgetenv("GLIMPSO_LOG").trimmed().toLower();
    if (level == "debug")
        QLoggingCategory::setFilterRules(QStringLiteral("glimpso.*.debug=true"));
    else if (level == "quiet" || level == "warning" || audience == Audience::commandLine)
        QLoggingCategory::setFilterRules(QStringLiteral("glimpso.*.info=false"));
}

} // namespace Logging
