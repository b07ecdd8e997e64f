#include "appbase/ConsoleText.h"

#include <QByteArray>

namespace ConsoleText {

void print(FILE *stream, const QString &text)
{
    if (text.isEmpty())
        return;
    QByteArray bytes = text.toLocal8Bit();
    if (!bytes.endsWith('\n'))
        bytes += '\n';
    std::fputs(bytes.constData(), stream);
}

} // namespace ConsoleText
