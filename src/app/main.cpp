#include "app/AppDelegate.h"
#include "app/CloudCredentialsCommand.h"
#include "app/CommandClient.h"
#include "app/CommandLine.h"
#include "app/HistoryListingProgram.h"
#include "app/InstanceChannelLoader.h"
#include "appbase/ConsoleText.h"
#include "appbase/Logging.h"
#include "appbase/SingleInstance.h"
#include "platform/desktop/XdgAutostartLoginItem.h"
#include "recognize/OcrCommand.h"
#include "settings/AppSettings.h"
#include "settings/IniSettingsStorage.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>

#include <cstdio>

namespace {

QString stateFolder()
{
    QString base = qEnvironmentVariable("XDG_STATE_HOME");
    if (base.isEmpty())
        base = QDir::homePath() + QStringLiteral("/.local/state");
    return base + QStringLiteral("/glimpso");
}

// A copy started by a command must not hold the command's output open, so its
// log goes to a file of its own.
bool startApplicationDetached()
{
    QDir().mkpath(stateFolder());
    QProcess process;
    process.setProgram(QCoreApplication::applicationFilePath());
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(stateFolder() + QStringLiteral("/glimpso.log"), QIODevice::Append);
    process.setStandardErrorFile(stateFolder() + QStringLiteral("/glimpso.log"), QIODevice::Append);
    return process.startDetached();
}

int sendVerb(int argc, char **argv, const QStringList &arguments)
{
    Logging::setUp(Logging::Audience::commandLine);
    QCoreApplication app(argc, argv);
    const CommandLine::Verb *verb = CommandLine::findVerb(arguments.first());
    auto channel = InstanceChannelLoader::make();
    CommandClient client(*channel, startApplicationDetached);
    const CommandClient::Outcome outcome = client.run(*verb, arguments);
    ConsoleText::print(stdout, outcome.output);
    ConsoleText::print(stderr, outcome.error);
    return outcome.exitCode;
}

// Verbs that only read or write what is on disk: no running copy, no display.
int runInProcess(int argc, char **argv, const QStringList &arguments)
{
    if (arguments.first() == u"ocr") {
        Logging::setUp(Logging::Audience::commandLine);
        QCoreApplication app(argc, argv);
        const OcrCommand::Outcome outcome = OcrCommand::run(arguments.mid(1));
        ConsoleText::print(stdout, outcome.output);
        ConsoleText::print(stderr, outcome.error);
        return outcome.exitCode;
    }
    if (arguments.first() == u"cloud-credentials")
        return CloudCredentialsCommand::runProgram(argc, argv);
    return HistoryListingProgram::run(argc, argv, arguments.mid(1));
}

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

int runApplication(int argc, char **argv)
{
    Logging::setUp();
    if (!hasDisplay()) {
        ConsoleText::print(stderr, QStringLiteral("glimpso: no desktop session to run in (neither DISPLAY nor WAYLAND_DISPLAY is set)"));
        return 1;
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("glimpso"));
    QApplication::setApplicationVersion(QStringLiteral(GLIMPSO_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("glimpso"));
    // A tray utility: closing its last window does not end it.
    QApplication::setQuitOnLastWindowClosed(false);

    auto channel = InstanceChannelLoader::make();
    SingleInstance singleInstance(*channel, QCoreApplication::applicationPid(), [] { QCoreApplication::quit(); });
    if (singleInstance.handOffToRunningCopy()) {
        ConsoleText::print(stderr, QStringLiteral("glimpso is already running"));
        return 0;
    }

    IniSettingsStorage storage(IniSettingsStorage::defaultFilePath());
    XdgAutostartLoginItem loginItem(XdgAutostartLoginItem::defaultEntryPath(),
                                    XdgAutostartLoginItem::installedLauncherPath(),
                                    QCoreApplication::applicationFilePath());
    AppSettings settings(storage, loginItem);

    AppDelegate delegate(settings, storage, singleInstance, *channel);
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &delegate, &AppDelegate::applicationWillTerminate);
    delegate.applicationDidFinishLaunching();
    return QApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);

    const CommandLine::Invocation invocation = CommandLine::parse(arguments);
    switch (invocation.kind) {
    case CommandLine::Invocation::Kind::showHelp:
        ConsoleText::print(stdout, CommandLine::usage());
        return 0;
    case CommandLine::Invocation::Kind::showVersion:
        ConsoleText::print(stdout, CommandLine::versionText());
        return 0;
    case CommandLine::Invocation::Kind::usageError:
        ConsoleText::print(stderr, invocation.error);
        ConsoleText::print(stderr, CommandLine::usage());
        return 2;
    case CommandLine::Invocation::Kind::sendVerb:
        return sendVerb(argc, argv, invocation.arguments);
    case CommandLine::Invocation::Kind::runInProcess:
        return runInProcess(argc, argv, invocation.arguments);
    case CommandLine::Invocation::Kind::startApplication:
        break;
    }
    return runApplication(argc, argv);
}
