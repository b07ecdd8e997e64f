#include "app/WindowCommand.h"

#include "app/CaptureCoordinator.h"
#include "acquire/ScreenList.h"
#include "acquire/WindowList.h"
#include "acquire/WindowTargets.h"
#include "appbase/InProcessNotices.h"

#include <QEventLoop>
#include <QTimer>

namespace {

CommandRouter::Reply usage(const QString &why)
{
    return {2, {}, why};
}

// Runs `loop` until it is quit or `limitMs` pass, unless what it waits for
// has happened already: the picker can come up, and a flow can end, before
// the call that started it returns, and a quit before exec() is lost.
void waitUnless(QEventLoop &loop, const bool &happened, int limitMs)
{
    if (happened)
        return;
    QTimer::singleShot(limitMs, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

WindowCommand::WindowCommand(CaptureCoordinator &coordinator, WindowList *windows, ScreenList &screens,
                             qint64 ownProcessID)
    : m_coordinator(coordinator), m_windows(windows), m_screens(screens), m_ownProcessID(ownProcessID)
{
}

std::optional<std::uint32_t> WindowCommand::parseWindowID(const QString &text)
{
    bool ok = false;
    const QString trimmed = text.trimmed();
    const qulonglong value = trimmed.startsWith(u"0x", Qt::CaseInsensitive) ? trimmed.mid(2).toULongLong(&ok, 16)
                                                                             : trimmed.toULongLong(&ok, 10);
    if (!ok || value == 0 || value > 0xffffffffull)
        return std::nullopt;
    return std::uint32_t(value);
}

std::optional<WindowCommand::Verb> WindowCommand::parse(const QStringList &arguments, QString *error)
{
    const auto fail = [error](const QString &text) {
        if (error)
            *error = text;
        return std::nullopt;
    };
    Verb verb;
    bool targetChosen = false;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == u"--copy" || argument == u"--save") {
            if (verb.output != Verb::Output::asSettings)
                return fail(QStringLiteral("glimpso: choose one of --copy and --save"));
            verb.output = argument == u"--copy" ? Verb::Output::copy : Verb::Output::save;
        } else if (argument == u"--under-pointer" || argument == u"--id") {
            if (targetChosen)
                return fail(QStringLiteral("glimpso: choose one of --under-pointer and --id"));
            targetChosen = true;
            verb.target = argument == u"--id" ? Verb::Target::id : Verb::Target::underPointer;
            if (verb.target == Verb::Target::id) {
                const std::optional<std::uint32_t> id = i + 1 < arguments.size() ? parseWindowID(arguments.at(i + 1))
                                                                                 : std::nullopt;
                if (!id)
                    return fail(QStringLiteral("glimpso: --id needs a window id such as 0x1e00007"));
                verb.windowID = *id;
                ++i;
            }
        } else {
            return fail(QStringLiteral("glimpso: unknown option '%1'").arg(argument));
        }
    }
    if (!targetChosen && verb.output != Verb::Output::asSettings)
        return fail(QStringLiteral("glimpso: --copy and --save need --under-pointer or --id"));
    return verb;
}

CommandRouter::Reply WindowCommand::run(const QStringList &arguments)
{
    QString error;
    const std::optional<Verb> verb = parse(arguments, &error);
    if (!verb)
        return usage(error);
    if (!m_coordinator.canPickWindows())
        return {1, {}, QStringLiteral("glimpso: window capture is not available on this desktop")};
    if (m_coordinator.isCapturing())
        return {1, {}, QStringLiteral("glimpso: another capture is in progress")};
    if (verb->target == Verb::Target::picker)
        return runPicker();

    std::uint32_t windowID = verb->windowID;
    if (verb->target == Verb::Target::underPointer) {
        const QList<WindowTarget> targets =
            m_windows ? WindowTargets::select(m_windows->onScreenEntries(), m_ownProcessID) : QList<WindowTarget>();
        const std::optional<WindowTarget> under = WindowTargets::hit(targets, m_screens.mouseLocation());
        if (!under)
            return {1, {}, QStringLiteral("glimpso: no window under the pointer")};
        windowID = under->windowID;
    }
    std::optional<EditorAction> output;
    if (verb->output == Verb::Output::copy)
        output = EditorAction::copy();
    else if (verb->output == Verb::Output::save)
        output = EditorAction::save();

    // The answer waits for the picture to be out, so that a script finds the
    // file and the clipboard ready when the command returns.
    QEventLoop loop;
    bool ended = false;
    CommandRouter::Reply reply{1, {}, QStringLiteral("glimpso: the capture did not finish")};
    const auto connection = QObject::connect(&m_coordinator, &CaptureCoordinator::windowFlowEnded, &loop,
                                             [&](const QString &path, const QString &failure) {
                                                 if (failure.isEmpty())
                                                     reply = {0, path.isEmpty() ? QString() : path + u'\n', {}};
                                                 else
                                                     reply = {1, {}, QStringLiteral("glimpso: ") + failure};
                                                 ended = true;
                                                 loop.quit();
                                             });
    // Without --copy or --save, where a picked window would go.
    m_coordinator.captureWindow([windowID](CaptureCoordinator::PickCompletion done) { done(windowID, false); },
                                output);
    waitUnless(loop, ended, 55000);
    QObject::disconnect(connection);
    return reply;
}

CommandRouter::Reply WindowCommand::runPicker()
{
    // The command returns once the picker is up (or the capture could not
    // start); the click is the user's business.
    QEventLoop loop;
    bool answered = false;
    CommandRouter::Reply reply{1, {}, QStringLiteral("glimpso: the window picker did not come up")};
    const auto presented = QObject::connect(&InProcessNotices::instance(), &InProcessNotices::overlayDidPresent, &loop,
                                            [&] {
                                                reply = {0, {}, {}};
                                                answered = true;
                                                loop.quit();
                                            });
    const auto ended = QObject::connect(&m_coordinator, &CaptureCoordinator::windowFlowEnded, &loop,
                                        [&](const QString &, const QString &failure) {
                                            reply = failure.isEmpty()
                                                ? CommandRouter::Reply{0, {}, {}}
                                                : CommandRouter::Reply{1, {}, QStringLiteral("glimpso: ") + failure};
                                            answered = true;
                                            loop.quit();
                                        });
    m_coordinator.captureWindow();
    waitUnless(loop, answered, 20000);
    QObject::disconnect(presented);
    QObject::disconnect(ended);
    return reply;
}
