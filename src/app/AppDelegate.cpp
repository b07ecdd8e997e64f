#include "app/AppDelegate.h"

#include "appbase/SingleInstance.h"
#include "settings/AppSettings.h"
#include "settings/IniSettingsStorage.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>
#include <QStringList>
#include <QTimer>

Q_LOGGING_CATEGORY(lcAppDelegate, "glimpso.AppDelegate", QtInfoMsg)

AppDelegate::AppDelegate(AppSettings &settings, IniSettingsStorage &storage, SingleInstance &singleInstance,
                         InstanceChannel &channel, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_storage(storage)
    , m_singleInstance(singleInstance)
    , m_channel(channel)
{
}

void AppDelegate::applicationDidFinishLaunching()
{
    qCInfo(lcAppDelegate) << "glimpso launched";
    logDisplays();

    // Before anything else is built: a copy that is replaced must not have shown anything.
    m_singleInstance.claim();
    m_singleInstance.onHandOff([] { qCInfo(lcAppDelegate) << "another launch handed off to this copy"; });

    registerCommands();
    startCommandChannel();

    // The environment's features run once the launch turn is over.
    QTimer::singleShot(0, this, [this] { runLaunchEnvironment(); });
}

void AppDelegate::logDisplays() const
{
    // Problem reports start from what the desktop looked like.
    QStringList displays;
    for (const QScreen *screen : QGuiApplication::screens()) {
        const QRect g = screen->geometry();
        displays << QStringLiteral("%1 %2x%3+%4+%5@%6")
                        .arg(screen->name())
                        .arg(g.width())
                        .arg(g.height())
                        .arg(g.x())
                        .arg(g.y())
                        .arg(screen->devicePixelRatio());
    }
    qCInfo(lcAppDelegate, "%lld %s: %s", qlonglong(displays.size()), displays.size() == 1 ? "display" : "displays",
           qUtf8Printable(displays.join(u", ")));
}

void AppDelegate::applicationWillTerminate()
{
    // Leave the bus first, so a new launch in these last moments starts afresh
    // instead of handing off to a copy that is going away.
    m_channel.withdraw();
}

void AppDelegate::addLaunchFeature(LaunchEnvironment::Feature feature, LaunchFeature run)
{
    m_launchFeatures[feature] = std::move(run);
}

void AppDelegate::registerCommands()
{
    m_commands.add(QStringLiteral("quit"), [](const QStringList &) {
        // Answer first; the quit follows once the reply is on its way.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        return CommandRouter::Reply{};
    });
    m_commands.add(QStringLiteral("settings-path"), [this](const QStringList &) {
        return CommandRouter::Reply{0, m_storage.filePath() + u'\n', {}};
    });
}

void AppDelegate::startCommandChannel()
{
    if (!m_channel.serveCommands([this](const QStringList &arguments) { return m_commands.handle(arguments); }))
        qCWarning(lcAppDelegate) << "the command line cannot reach this copy over" << m_channel.name();
}

void AppDelegate::runLaunchEnvironment()
{
    for (const LaunchEnvironment::Request &request : LaunchEnvironment::readProcessEnvironment()) {
        const auto it = m_launchFeatures.find(request.feature);
        if (it == m_launchFeatures.end()) {
            qCDebug(lcAppDelegate) << LaunchEnvironment::variableName(request.feature)
                                   << "is set, but nothing in this build acts on it";
            continue;
        }
        it->second(request);
    }
}
