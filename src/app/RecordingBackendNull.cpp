#include "app/RecordingBackend.h"

#include "appbase/AppError.h"

RecordingBackend RecordingBackend::load()
{
    RecordingBackend backend;
    backend.name = QStringLiteral("none");
    backend.makeStream = [](const StreamRequest &) -> std::unique_ptr<CaptureStream> {
        throw AppError::captureFailed(QStringLiteral("this build of glimpso has no screen recording backend"));
    };
    backend.translucentWindows = [] { return false; };
    return backend;
}
