#include "app/RecordingVerb.h"

#include "app/CaptureVerb.h"

std::optional<RecordingVerb> RecordingVerb::parse(const QStringList &arguments, QString *error)
{
    const auto fail = [error](const QString &text) {
        if (error)
            *error = QStringLiteral("glimpso: ") + text;
        return std::nullopt;
    };
    RecordingVerb verb;
    if (arguments.size() == 1 && !arguments.first().startsWith(u'-')) {
        const QString &word = arguments.first();
        if (word == u"area")
            verb.area = RecordingCoordinator::Area::area;
        else if (word == u"window")
            verb.area = RecordingCoordinator::Area::window;
        else if (word == u"screen")
            verb.area = RecordingCoordinator::Area::screen;
        else
            return fail(QStringLiteral("'%1' is not one of area, window, screen").arg(word));
        return verb;
    }
    const auto number = [&](qsizetype &i, int low, int high, const QString &name) -> std::optional<int> {
        if (i + 1 >= arguments.size())
            return std::nullopt;
        bool ok = false;
        const int value = arguments.at(++i).toInt(&ok);
        if (!ok || value < low || value > high) {
            fail(QStringLiteral("%1 takes a whole number from %2 to %3").arg(name).arg(low).arg(high));
            return std::nullopt;
        }
        return value;
    };
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == u"--rect") {
            if (i + 1 >= arguments.size())
                return fail(QStringLiteral("--rect needs a rectangle such as 640x480+100+100"));
            verb.rect = CaptureVerb::parseGeometry(arguments.at(++i));
            if (!verb.rect)
                return fail(QStringLiteral("'%1' is not a rectangle such as 640x480+100+100").arg(arguments.at(i)));
        } else if (argument == u"--seconds") {
            verb.seconds = number(i, 1, 3600, argument);
            if (!verb.seconds)
                return fail(QStringLiteral("--seconds takes a whole number from 1 to 3600"));
        } else if (argument == u"--fps") {
            verb.framesPerSecond = number(i, 1, 60, argument);
            if (!verb.framesPerSecond)
                return fail(QStringLiteral("--fps takes a whole number from 1 to 60"));
        } else if (argument == u"--copy" || argument == u"--save") {
            const RecordingAction action = argument == u"--copy" ? RecordingAction::copy : RecordingAction::save;
            if (verb.action && *verb.action != action)
                return fail(QStringLiteral("--copy and --save exclude each other"));
            verb.action = action;
        } else if (argument == u"--wait") {
            verb.wait = true;
        } else {
            return fail(QStringLiteral("unknown option '%1'").arg(argument));
        }
    }
    if (!verb.rect && !arguments.isEmpty())
        return fail(QStringLiteral("--seconds, --fps, --copy, --save and --wait need --rect"));
    return verb;
}
