#pragma once

#include "videowriting/SoundSource.h"

#include <filesystem>
#include <memory>

// The sound capture lives in a module of its own, glimpso-pulse.so, loaded at
// the first recording with sound: libpulse and the libraries it brings are
// some thirty, which no other part of the program needs.
struct PulseEntry {
    int version;
    std::unique_ptr<videowriting::SoundSource> (*makeSource)(videowriting::SoundSource::Kind kind);
};

namespace PulseModule {

constexpr const char *fileName = "glimpso-pulse.so";
constexpr const char *entryName = "glimpso_pulse_entry";
constexpr int version = 1;

// A source of `kind` from the module in `folder` (ModuleLoader::folder() by
// default). Throws std::runtime_error when the module can't be loaded.
std::unique_ptr<videowriting::SoundSource> makeSource(videowriting::SoundSource::Kind kind,
                                                      const std::filesystem::path &folder = {});

} // namespace PulseModule
