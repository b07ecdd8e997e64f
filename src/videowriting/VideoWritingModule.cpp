#include "videowriting/VideoWritingModule.h"

#include <dlfcn.h>
#include <mutex>
#include <stdexcept>

namespace videowriting {

const VideoWritingModule &VideoWritingModule::load(const std::filesystem::path &folder, WriterLog::Handler log)
{
    static std::mutex mutex;
    static const VideoWritingModule *loaded = nullptr;
    std::lock_guard guard(mutex);
    if (loaded)
        return *loaded;
    const std::filesystem::path path = folder / fileName;
    void *library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        const char *why = dlerror();
        throw std::runtime_error("The video writer couldn't be loaded: " + std::string(why ? why : path.string()));
    }
    using EntryFunction = const VideoWritingEntry *(*)();
    auto entryFunction = reinterpret_cast<EntryFunction>(dlsym(library, entryName));
    const VideoWritingEntry *entry = entryFunction ? entryFunction() : nullptr;
    if (!entry || entry->version != version) {
        dlclose(library);
        throw std::runtime_error("The video writer couldn't be loaded: " + path.string() +
                                 " is of another version of glimpso");
    }
    entry->setLogHandler(log);
    // Kept for the life of the process, like the library.
    loaded = new VideoWritingModule(entry);
    return *loaded;
}

} // namespace videowriting
