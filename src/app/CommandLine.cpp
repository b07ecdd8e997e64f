#include "app/CommandLine.h"

#include <QFileInfo>

#include <array>

namespace CommandLine {

namespace {
constexpr std::array kVerbs = {
    Verb{"settings-path", "", "Print the path of the settings file", 0, 0, true, false},
    Verb{"region", "[--rect WxH+X+Y [--copy|--save]]", "Select a region on the frozen screen; with --rect, capture those pixels", 0, 3, true, false, 60000},
    Verb{"all", "[--copy|--save]", "Select on every display; with --copy or --save, capture them all", 0, 1, true, false, 60000},
    Verb{"text", "[--rect WxH+X+Y]", "Select an area and copy the text in it; with --rect, read those pixels", 0, 2, true, false, 60000},
    Verb{"window", "[--under-pointer|--id 0xWINDOW] [--copy|--save]", "Pick a window and capture it; or the one under the pointer, or this one", 0, 3, true, false, 60000},
    Verb{"ocr", "FILE [--json]", "Print the text (and code) in a picture (needs no running copy)", 1, 2, false, true},
    Verb{"delay", "N", "Select a region after N seconds (N is kept for the menu)", 1, 1, true, false},
    Verb{"gif", "[area|window|screen] | --rect WxH+X+Y [--seconds N] [--fps N] [--copy|--save] [--wait]", "Record a GIF; with --rect, of that rectangle at once (--wait: print the file when written)", 0, 10, true, false, 86400000},
    Verb{"video", "[area|window|screen] | --rect WxH+X+Y [--seconds N] [--fps N] [--codec h264|hevc] [--system-audio] [--microphone] [--copy|--save] [--wait]", "Record a video; with --rect, as for gif", 0, 14, true, false, 86400000},
    Verb{"stop", "", "Stop the recording", 0, 0, false, false},
    Verb{"cancel", "", "Cancel the recording, keeping nothing", 0, 0, false, false},
    Verb{"history", "[--list [--json]]", "Show the history; with --list, print it, newest first (needs no running copy)", 0, 2, true, true, 0, "--list"},
    Verb{"settings", "[PAGE]", "Open the settings, on PAGE (general, shortcuts, cloud...)", 0, 1, true, false},
    Verb{"open-folder", "", "Open the screenshots folder in the file manager", 0, 0, true, false},
    Verb{"edit-mode", "[onScreen|afterCapture]", "Draw on the frozen screen or in the editor window; alone, print which", 0, 1, true, false},
    Verb{"updates", "", "Check for updates", 0, 0, true, false},
    Verb{"report", "", "Report a problem", 0, 0, true, false},
    Verb{"upload", "FILE", "Upload FILE to the cloud bucket; print its link, which is also copied", 1, 1, true, false, 24 * 3600 * 1000, nullptr, true},
    Verb{"cloud-credentials", "", "Keep the cloud access key and secret, read as two lines from standard input", 0, 0, false, true},
    Verb{"quit", "", "Quit the running copy of glimpso", 0, 0, false, false},
};
} // namespace

std::span<const Verb> verbs()
{
    return kVerbs;
}

const Verb *findVerb(const QString &name)
{
    for (const Verb &verb : kVerbs) {
        if (name == QLatin1String(verb.name))
            return &verb;
    }
    return nullptr;
}

Invocation parse(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return {};
    const QString first = arguments.first();
    if (first == u"-h" || first == u"--help" || first == u"help")
        return {Invocation::Kind::showHelp, {}, {}};
    if (first == u"-v" || first == u"--version")
        return {Invocation::Kind::showVersion, {}, {}};
    const Verb *verb = findVerb(first);
    if (!verb) {
        const QString what = first.startsWith(u'-') ? QStringLiteral("unknown option") : QStringLiteral("unknown command");
        return {Invocation::Kind::usageError, {}, QStringLiteral("glimpso: %1 '%2'").arg(what, first)};
    }
    const qsizetype count = arguments.size() - 1;
    if (count < verb->minArguments || count > verb->maxArguments) {
        QString expected = QLatin1String(verb->name);
        if (*verb->arguments)
            expected += u' ' + QLatin1String(verb->arguments);
        return {Invocation::Kind::usageError, {}, QStringLiteral("glimpso: usage: glimpso %1").arg(expected)};
    }
    QStringList sent = arguments;
    if (verb->firstArgumentIsPath && count > 0)
        sent[1] = QFileInfo(sent[1]).absoluteFilePath();
    const bool inProcess = verb->runsInProcess &&
                           (!verb->inProcessOption || (count > 0 && arguments[1] == QLatin1String(verb->inProcessOption)));
    const auto kind = inProcess ? Invocation::Kind::runInProcess : Invocation::Kind::sendVerb;
    return {kind, sent, {}};
}

QString usage()
{
    QString text = QStringLiteral(
        "Usage: glimpso [COMMAND [ARGUMENTS]]\n"
        "\n"
        "Without a command, starts glimpso in the system tray; if it runs already,\n"
        "the running copy stays in charge. A command is sent to the running copy,\n"
        "which is started first when needed; `history --list` reads the save\n"
        "folder itself and needs neither a running copy nor a display. Every\n"
        "item of the tray menu is a command, for the desktop's shortcut settings.\n"
        "\n"
        "Commands:\n");
    for (const Verb &verb : kVerbs) {
        QString left = QLatin1String(verb.name);
        if (*verb.arguments)
            left += u' ' + QLatin1String(verb.arguments);
        text += QStringLiteral("  %1%2\n").arg(left.size() >= 26 ? left + QStringLiteral("  ") : left.leftJustified(26),
                                               QLatin1String(verb.summary));
    }
    text += QStringLiteral(
        "\n"
        "Options:\n"
        "  -h, --help                Show this help\n"
        "  -v, --version             Show the version\n"
        "\n"
        "Environment: GLIMPSO_LOG=debug logs more; the log of a copy started by a\n"
        "command goes to $XDG_STATE_HOME/glimpso/glimpso.log.\n");
    return text;
}

QString versionText()
{
    return QStringLiteral("glimpso " GLIMPSO_VERSION);
}

} // namespace CommandLine
