// The program that users, desktop entries and scripts call. The history
// listing is answered right here, by a process that loads Qt Core and Gui and
// the history store and nothing else: scripts call it often, and loading the
// whole application (widgets, the bus, X11, the encoders) would take longer
// than the listing itself, all the more from a cold disk. Everything else is
// handed to the application by exec, with the same arguments and process id.
#include "app/HistoryListingProgram.h"

#include <QCoreApplication>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
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

// The application lies at the same place relative to this program in the
// build tree and wherever it is installed.
std::string applicationPath()
{
    char self[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0)
        return GLIMPSO_APPLICATION_PATH;
    std::string folder(self, size_t(length));
    folder.erase(folder.rfind('/') + 1);
    return folder + GLIMPSO_APPLICATION_PATH;
}

} // namespace

int main(int argc, char **argv)
{
    if (isHistoryListing(argc, argv))
        return listHistory(argc, argv);
    const std::string application = applicationPath();
    ::execv(application.c_str(), argv);
    std::fprintf(stderr, "glimpso: cannot start %s: %s\n", application.c_str(), std::strerror(errno));
    return 127;
}
