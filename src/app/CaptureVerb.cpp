#include "app/CaptureVerb.h"

#include <QRegularExpression>

std::optional<QRect> CaptureVerb::parseGeometry(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^(\\d+)x(\\d+)([+-]\\d+)([+-]\\d+)$"));
    const QRegularExpressionMatch match = form.match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    bool ok = true;
    const int width = match.captured(1).toInt(&ok);
    const int height = ok ? match.captured(2).toInt(&ok) : 0;
    const int x = ok ? match.captured(3).toInt(&ok) : 0;
    const int y = ok ? match.captured(4).toInt(&ok) : 0;
    if (!ok || width <= 0 || height <= 0)
        return std::nullopt;
    return QRect(x, y, width, height);
}

std::optional<CaptureVerb> CaptureVerb::parse(const QStringList &arguments, QString *error)
{
    const auto fail = [error](const QString &text) {
        if (error)
            *error = text;
        return std::nullopt;
    };
    if (arguments.isEmpty()
        || (arguments.first() != u"region" && arguments.first() != u"all" && arguments.first() != u"text"))
        return fail(QStringLiteral("glimpso: not a capture command"));
    CaptureVerb verb;
    verb.allDisplays = arguments.first() == u"all";
    if (arguments.first() == u"text") {
        verb.intent = CaptureIntent::text;
        verb.interactive = arguments.size() == 1;
        if (verb.interactive)
            return verb;
        if (arguments.at(1) != u"--rect")
            return fail(QStringLiteral("glimpso: unknown option '%1'").arg(arguments.at(1)));
        if (arguments.size() != 3)
            return fail(QStringLiteral("glimpso: --rect needs a rectangle such as 640x120+0+0"));
        verb.rect = parseGeometry(arguments.at(2));
        if (!verb.rect)
            return fail(QStringLiteral("glimpso: '%1' is not a rectangle such as 640x120+0+0").arg(arguments.at(2)));
        return verb;
    }
    bool outputChosen = false;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == u"--copy" || argument == u"--save") {
            if (outputChosen)
                return fail(QStringLiteral("glimpso: choose one of --copy and --save"));
            outputChosen = true;
            verb.output = argument == u"--copy" ? Output::copy : Output::save;
        } else if (argument == u"--rect" && !verb.allDisplays) {
            if (i + 1 >= arguments.size())
                return fail(QStringLiteral("glimpso: --rect needs a rectangle such as 1920x1080+0+0"));
            verb.rect = parseGeometry(arguments.at(++i));
            if (!verb.rect)
                return fail(QStringLiteral("glimpso: '%1' is not a rectangle such as 1920x1080+0+0").arg(arguments.at(i)));
        } else {
            return fail(QStringLiteral("glimpso: unknown option '%1'").arg(argument));
        }
    }
    if (!verb.allDisplays && !verb.rect && outputChosen)
        return fail(QStringLiteral("glimpso: --copy and --save need --rect"));
    verb.interactive = !verb.rect && !outputChosen;
    return verb;
}
