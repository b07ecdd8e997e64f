#pragma once

#include "app/CommandRouter.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

class CaptureCoordinator;
class ScreenList;
class WindowList;

// The command line's window capture:
//   glimpso window                                    the picker, as the tray does
//   glimpso window --under-pointer [--copy | --save]  the window under the pointer
//   glimpso window --id 0xWINDOW [--copy | --save]    that window
// Without --copy or --save the picture goes where a picked one would (the
// clipboard, or the editor window). The command answers once the picture is
// out, and prints the saved file's path.
class WindowCommand
{
public:
    struct Verb {
        enum class Target { picker, underPointer, id };
        enum class Output { asSettings, copy, save };
        Target target = Target::picker;
        std::uint32_t windowID = 0;
        Output output = Output::asSettings;
    };

    WindowCommand(CaptureCoordinator &coordinator, WindowList *windows, ScreenList &screens, qint64 ownProcessID);

    // `arguments` are those after the verb.
    CommandRouter::Reply run(const QStringList &arguments);

    static std::optional<Verb> parse(const QStringList &arguments, QString *error);
    // "0x1e00007" or "31457287".
    static std::optional<std::uint32_t> parseWindowID(const QString &text);

private:
    CommandRouter::Reply runPicker();

    CaptureCoordinator &m_coordinator;
    WindowList *m_windows;
    ScreenList &m_screens;
    qint64 m_ownProcessID;
};
