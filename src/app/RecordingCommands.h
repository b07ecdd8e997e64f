#pragma once

#include "app/CommandRouter.h"
#include "appbase/CaptureKind.h"

class RecordingCoordinator;
struct RecordingVerb;

// The recording verbs of the command line: gif, video, stop and cancel.
class RecordingCommands
{
public:
    using Reply = CommandRouter::Reply;

    explicit RecordingCommands(RecordingCoordinator &coordinator);

    void registerCommands(CommandRouter &router);

    Reply record(CaptureKind kind, const QStringList &arguments);
    Reply stop();
    Reply cancel();

private:
    Reply recordRect(CaptureKind kind, const RecordingVerb &verb);

    RecordingCoordinator &m_coordinator;
};
