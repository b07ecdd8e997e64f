#pragma once

#include <QString>
#include <QStringList>

#include <span>

// The command line: `glimpso` starts the tray application; `glimpso VERB ...`
// sends the verb to the running copy, or, for a verb that only reads what is
// on disk, runs it right here without one.
namespace CommandLine {

struct Verb {
    const char *name;
    const char *arguments;  // as shown in the usage, e.g. "N"
    const char *summary;
    int minArguments;
    int maxArguments;
    bool startsApplication; // start glimpso first when no copy runs
    bool runsInProcess;     // done by this process, with no running copy and no display
                            // (only with inProcessOption as its first argument, when there is one)
    int answerTimeoutMs = 0; // how long the running copy may take to answer; 0 for the usual time
    const char *inProcessOption = nullptr;
    bool firstArgumentIsPath = false; // made absolute here: the running copy has another working folder
};

std::span<const Verb> verbs();
const Verb *findVerb(const QString &name);

struct Invocation {
    enum class Kind { startApplication, sendVerb, runInProcess, showHelp, showVersion, usageError };
    Kind kind = Kind::startApplication;
    QStringList arguments; // the verb and its arguments
    QString error;         // for usageError
};

Invocation parse(const QStringList &arguments); // without the program name
QString usage();
QString versionText();

} // namespace CommandLine
