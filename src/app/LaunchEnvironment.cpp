#include "app/LaunchEnvironment.h"

#include <QtGlobal>

#include <array>

namespace LaunchEnvironment {

namespace {
struct Row {
    Feature feature;
    const char *variable;
    const char *partner; // nullptr when the feature needs one variable
};

constexpr std::array kTable = {
    Row{Feature::openEditor, "GLIMPSO_OPEN_EDITOR", nullptr},
    Row{Feature::testOCR, "GLIMPSO_TEST_OCR", nullptr},
    Row{Feature::testRecord, "GLIMPSO_TEST_RECORD", "GLIMPSO_TEST_RECORD_REPORT"},
    Row{Feature::testPhase3, "GLIMPSO_TEST_PHASE3", nullptr},
    Row{Feature::testTrim, "GLIMPSO_TEST_TRIM", nullptr},
    Row{Feature::testNotify, "GLIMPSO_TEST_NOTIFY", nullptr},
    Row{Feature::testWindow, "GLIMPSO_TEST_WINDOW", "GLIMPSO_TEST_WINDOW_OUT"},
    Row{Feature::showReport, "GLIMPSO_SHOW_REPORT", nullptr},
    Row{Feature::showSettings, "GLIMPSO_SHOW_SETTINGS", nullptr},
    Row{Feature::showHistory, "GLIMPSO_SHOW_HISTORY", nullptr},
};
} // namespace

std::vector<Request> read(const Lookup &lookup)
{
    std::vector<Request> requests;
    for (const Row &row : kTable) {
        const auto value = lookup(row.variable);
        if (!value)
            continue;
        Request request{row.feature, *value, {}};
        if (row.partner) {
            const auto partner = lookup(row.partner);
            if (!partner)
                continue; // the feature is skipped without its partner
            request.partner = *partner;
        }
        requests.push_back(request);
    }
    return requests;
}

std::vector<Request> readProcessEnvironment()
{
    return read([](const char *name) -> std::optional<QString> {
        if (!qEnvironmentVariableIsSet(name))
            return std::nullopt;
        return qEnvironmentVariable(name);
    });
}

const char *variableName(Feature feature)
{
    for (const Row &row : kTable) {
        if (row.feature == feature)
            return row.variable;
    }
    return "";
}

} // namespace LaunchEnvironment
