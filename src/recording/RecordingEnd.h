#pragma once

#include "appbase/AppError.h"

#include <QString>

#include <optional>

// How a recording ended; a session gives exactly one.
struct RecordingEnd {
    enum class Kind { finished, failed, cancelled };

    Kind kind = Kind::cancelled;
    // finished: the file, and the seconds from the stream's start to the stop.
    QString path;
    double seconds = 0;
    // failed: why.
    std::optional<AppError> error;

    static RecordingEnd finished(const QString &path, double seconds);
    static RecordingEnd failed(const AppError &error);
    static RecordingEnd cancelled();

    // For logs: "finished(/tmp/x.gif, 3.02 s)", "failed(…)", "cancelled".
    QString description() const;
};
