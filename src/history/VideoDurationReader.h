#pragma once

#include <QString>

// The length of a video in seconds, from the container's header through
// libavformat; no frame is decoded. 0 when the file can't be opened or gives
// no finite length.
namespace VideoDurationReader {

double seconds(const QString &path);

// For a command-line listing: a damaged video is an ordinary case there (the
// item shows with length 0), and libavformat's own complaints about it would
// only clutter standard error. The application keeps the library's log.
void quietLibraryLog();

} // namespace VideoDurationReader
