#include "RequestFile.h"

#include <QList>

namespace glimpso::tools {

namespace {

QByteArray trimmedBlanks(const QByteArray &text)
{
    qsizetype begin = 0;
    while (begin < text.size() && (text.at(begin) == ' ' || text.at(begin) == '\t'))
        ++begin;
    return text.mid(begin);
}

// "GET /a b/ HTTP/1.1": the target may itself hold blanks.
bool parseRequestLine(const QByteArray &line, cloud::HttpRequest &request, QByteArray &target)
{
    const qsizetype first = line.indexOf(' ');
    const qsizetype last = line.lastIndexOf(' ');
    if (first <= 0 || last <= first)
        return false;
    request.method = line.left(first);
    target = line.mid(first + 1, last - first - 1);
    return true;
}

} // namespace

bool RequestFile::parse(const QByteArray &text, RequestFile &out)
{
    const qsizetype split = text.indexOf("\n\n");
    const QByteArray head = split < 0 ? text : text.left(split);
    out.body = split < 0 ? QByteArray() : text.mid(split + 2);

    const QList<QByteArray> lines = head.split('\n');
    QByteArray target;
    if (lines.isEmpty() || !parseRequestLine(lines.first(), out.request, target))
        return false;

    QByteArray name;
    QByteArray value;
    auto flush = [&] {
        if (!name.isEmpty())
            out.request.addHeader(name, value);
        name.clear();
        value.clear();
    };
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray &line = lines.at(i);
        if (line.isEmpty())
            continue;
        if ((line.startsWith(' ') || line.startsWith('\t')) && !name.isEmpty()) {
            value += ' ' + trimmedBlanks(line);
            continue;
        }
        flush();
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0)
            continue;
        name = line.left(colon);
        value = line.mid(colon + 1);
    }
    flush();

    const QByteArray host = out.request.header("Host");
    out.request.url = QUrl(QString::fromUtf8("http://" + host + target), QUrl::TolerantMode);
    return true;
}

} // namespace glimpso::tools
