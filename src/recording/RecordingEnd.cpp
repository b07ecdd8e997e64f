#include "recording/RecordingEnd.h"

RecordingEnd RecordingEnd::finished(const QString &path, double seconds)
{
    return {Kind::finished, path, seconds, std::nullopt};
}

RecordingEnd RecordingEnd::failed(const AppError &error)
{
    return {Kind::failed, {}, 0, error};
}

RecordingEnd RecordingEnd::cancelled()
{
    return {};
}

QString RecordingEnd::description() const
{
    switch (kind) {
    case Kind::finished:
        return QStringLiteral("finished(%1, %2 s)").arg(path).arg(seconds, 0, 'f', 2);
    case Kind::failed:
        return QStringLiteral("failed(%1)").arg(error ? error->errorDescription() : QString());
    case Kind::cancelled:
        break;
    }
    return QStringLiteral("cancelled");
}
