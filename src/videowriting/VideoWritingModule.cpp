#include "videowriting/VideoWritingModule.h"

#include "videowriting/ModuleLoader.h"

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
    const VideoWritingEntry *entry = nullptr;
    try {
        entry = static_cast<const VideoWritingEntry *>(ModuleLoader::entry(folder / fileName, entryName));
    } catch (const std::runtime_error &error) {
        throw std::runtime_error(std::string("The video writer couldn't be loaded: ") + error.what());
    }
    if (!entry || entry->version != version)
        throw std::runtime_error("The video writer couldn't be loaded: " + (folder / fileName).string() +
                                 " is of another version of glimpso");
    entry->setLogHandler(log);
    // Kept for the life of the process, like the library.
    loaded = new VideoWritingModule(entry);
    return *loaded;
}

} // namespace videowriting
