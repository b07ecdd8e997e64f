#include "platform/pulse/PulseModule.h"

#include "videowriting/ModuleLoader.h"

#include <mutex>
#include <stdexcept>
#include <string>

std::unique_ptr<videowriting::SoundSource> PulseModule::makeSource(videowriting::SoundSource::Kind kind,
                                                                   const std::filesystem::path &folder)
{
    static std::mutex mutex;
    static const PulseEntry *entry = nullptr;
    {
        std::lock_guard guard(mutex);
        if (!entry) {
            const std::filesystem::path from = folder.empty() ? videowriting::ModuleLoader::folder() : folder;
            try {
                entry = static_cast<const PulseEntry *>(videowriting::ModuleLoader::entry(from / fileName, entryName));
            } catch (const std::runtime_error &error) {
                throw std::runtime_error(std::string("The sound capture couldn't be loaded: ") + error.what());
            }
            if (!entry || entry->version != version) {
                entry = nullptr;
                throw std::runtime_error("The sound capture couldn't be loaded: " + (from / fileName).string() +
                                         " is of another version of glimpso");
            }
        }
    }
    return entry->makeSource(kind);
}
