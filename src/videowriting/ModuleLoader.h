#pragma once

#include <filesystem>

namespace videowriting {

// Shared modules of glimpso's own that the application loads when first
// needed (the video writer, the sound capture): they lie beside the
// application's program, and each exports one entry function that gives a
// table of what it offers.
namespace ModuleLoader {

// The folder of the modules: GLIMPSO_MODULE_DIR when set, else the folder of
// the running program.
std::filesystem::path folder();

// Loads `file` (kept for the life of the process) and calls its function
// `entryName`, giving what it returns. Throws std::runtime_error with the
// reason ("... cannot open shared object file ...") when either is missing.
const void *entry(const std::filesystem::path &file, const char *entryName);

} // namespace ModuleLoader

} // namespace videowriting
