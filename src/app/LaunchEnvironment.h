#pragma once

#include <QString>

#include <functional>
#include <optional>
#include <vector>

// Environment variables that drive one feature at launch, so an automated run
// needs no person at the keyboard. Read in a fixed order; each acts on its own,
// and one that is incomplete is skipped without a word.
namespace LaunchEnvironment {

enum class Feature {
    openEditor,   // GLIMPSO_OPEN_EDITOR: an image to open in the editor
    testOCR,      // GLIMPSO_TEST_OCR: an image to read text from
    testRecord,   // GLIMPSO_TEST_RECORD with GLIMPSO_TEST_RECORD_REPORT
    testPhase3,   // GLIMPSO_TEST_PHASE3: a video for GIF making, cutting and trimming
    testTrim,     // GLIMPSO_TEST_TRIM: a video or GIF to open in the trim window
    testNotify,   // GLIMPSO_TEST_NOTIFY: "error:<what>" or "click:<page>"
    testWindow,   // GLIMPSO_TEST_WINDOW with GLIMPSO_TEST_WINDOW_OUT
    showReport,   // GLIMPSO_SHOW_REPORT
    showSettings, // GLIMPSO_SHOW_SETTINGS: a settings page
    showHistory,  // GLIMPSO_SHOW_HISTORY
};

struct Request {
    Feature feature;
    QString value;
    QString partner; // the second variable's value, for the features that need two
};

using Lookup = std::function<std::optional<QString>(const char *name)>;

std::vector<Request> read(const Lookup &lookup);
std::vector<Request> readProcessEnvironment();
const char *variableName(Feature feature);

} // namespace LaunchEnvironment
