#pragma once

#include "appbase/ConsoleText.h"
#include "appbase/Logging.h"
#include "history/HistoryListCommand.h"
#include "history/HistoryStore.h"
#include "history/VideoDurationReader.h"
#include "platform/desktop/XdgAutostartLoginItem.h"
#include "settings/AppSettings.h"
#include "settings/IniSettingsStorage.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

// `glimpso history --list [--json]` as a whole program: it only reads the save
// folder, so it needs no running copy, no display and no bus. Header-only on
// purpose: both the small front program and the application run it, and the
// front must not link the application's libraries.
namespace HistoryListingProgram {

// `arguments` are those after the verb.
inline int run(int argc, char **argv, const QStringList &arguments)
{
    Logging::setUp(Logging::Audience::commandLine);
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("glimpso"));
    VideoDurationReader::quietLibraryLog();
    IniSettingsStorage storage(IniSettingsStorage::defaultFilePath());
    XdgAutostartLoginItem loginItem(XdgAutostartLoginItem::defaultEntryPath(),
                                    XdgAutostartLoginItem::installedLauncherPath(),
                                    QCoreApplication::applicationFilePath());
    AppSettings settings(storage, loginItem);
    const auto outcome = HistoryListCommand::run(arguments, settings, HistoryStore::defaultSupportFolder());
    ConsoleText::print(stdout, outcome.output);
    ConsoleText::print(stderr, outcome.error);
    return outcome.exitCode;
}

} // namespace HistoryListingProgram
