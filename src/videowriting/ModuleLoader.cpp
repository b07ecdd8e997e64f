#include "videowriting/ModuleLoader.h"

#include <cstdlib>
#include <dlfcn.h>
#include <stdexcept>
#include <string>

namespace videowriting {

std::filesystem::path ModuleLoader::folder()
{
    if (const char *overridden = std::getenv("GLIMPSO_MODULE_DIR"); overridden && *overridden)
        return overridden;
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : program.parent_path();
}

const void *ModuleLoader::entry(const std::filesystem::path &file, const char *entryName)
{
    void *library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        const char *why = dlerror();
        throw std::runtime_error(why ? why : file.string() + " can't be loaded");
    }
    using EntryFunction = const void *(*)();
    auto function = reinterpret_cast<EntryFunction>(dlsym(library, entryName));
    if (!function) {
        dlclose(library);
        throw std::runtime_error(file.string() + " has no " + entryName);
    }
    return function();
}

} // namespace videowriting
