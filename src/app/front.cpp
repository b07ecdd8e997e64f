// The program that users, desktop entries and scripts call. It answers what
// it can with few libraries loaded: the history listing is read right here,
// and a verb for a copy that already runs is handed to it over the bus from
// here too, because loading the whole application (widgets, X11, the
// encoders) only to pass a verb on would take longer than the verb itself: a
// shortcut's overlay must be up in a blink. Everything else (starting the
// application, help, usage errors) is handed to the application by exec,
// with the same arguments and process id.
#include "app/CommandClient.h"
#include "app/CommandLine.h"
#include "app/HistoryListingProgram.h"
#include "app/InstanceChannelLoader.h"
#include "appbase/ConsoleText.h"
#include "appbase/Logging.h"

#include <QCoreApplication>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include <unistd.h>

namespace {

// `history` with one or two arguments; any other count is a usage error, which
// the application's own command line reports with the usage.
bool isHistoryListing(int argc, char **argv)
{
    return (argc == 3 || argc == 4) && std::strcmp(argv[1], "history") == 0;
}

int listHistory(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 2; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return HistoryListingProgram::run(argc, argv, arguments);
}

QStringList argumentsOf(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return arguments;
}

// The running copy's answer to a verb; none when no copy runs (or the
// arguments are not a verb for one), and the application must take over.
std::optional<int> answerThroughRunningCopy(int argc, char **argv)
{
    const CommandLine::Invocation invocation = CommandLine::parse(argumentsOf(argc, argv));
    if (invocation.kind != CommandLine::Invocation::Kind::sendVerb)
        return std::nullopt;
    const CommandLine::Verb *verb = CommandLine::findVerb(invocation.arguments.first());
    if (!verb)
        return std::nullopt;
    Logging::setUp(Logging::Audience::commandLine);
    QCoreApplication app(argc, argv);
    auto channel = InstanceChannelLoader::make();
    if (channel->otherCopies().isEmpty())
        return std::nullopt;
    // A copy that is gone by now is not started from here: the answer says so.
    CommandClient client(*channel, [] { return false; });
    const CommandClient::Outcome outcome = client.run(*verb, invocation.arguments);
    ConsoleText::print(stdout, outcome.output);
    ConsoleText::print(stderr, outcome.error);
    return outcome.exitCode;
}

// The application (and the reader of pictures) lie at the same place
// relative to this program in the build tree and wherever it is installed.
std::string besideThisProgram(const char *relativePath)
{
    char self[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0)
        return relativePath;
    std::string folder(self, size_t(length));
    folder.erase(folder.rfind('/') + 1);
    return folder + relativePath;
}

} // namespace

int main(int argc, char **argv)
{
    if (isHistoryListing(argc, argv))
        return listHistory(argc, argv);
    if (const std::optional<int> answered = answerThroughRunningCopy(argc, argv))
        return *answered;
    // Reading a picture needs neither the application nor a running copy.
    const bool reading = argc >= 2 && std::strcmp(argv[1], "ocr") == 0;
    const std::string application = besideThisProgram(reading ? GLIMPSO_OCR_PATH : GLIMPSO_APPLICATION_PATH);
    // One reading runs beside the code reader: the engine's OpenMP threads,
    // spinning on a busy desktop, would cost more than they bring. The
    // runtime reads this as it loads, so before the program starts; a limit
    // the user set stays.
    if (reading)
        ::setenv("OMP_THREAD_LIMIT", "1", 0);
    ::execv(application.c_str(), argv);
    std::fprintf(stderr, "glimpso: cannot start %s: %s\n", application.c_str(), std::strerror(errno));
    return 127;
}
